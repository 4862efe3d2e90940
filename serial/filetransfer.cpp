#include "filetransfer.h"

#include "filesendpage.h"
#include "quietreader.h"
#include "transferlogdialog.h"
#include "transferoptions.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QPushButton>

#include <utility>

namespace {

// Block 0 and the data have eight bits.
SerialSettings transferSettings(SerialSettings settings)
{
    settings.dataBits = QSerialPort::Data8;
    if (settings.stopBits == QSerialPort::OneAndHalfStop)
        settings.stopBits = QSerialPort::OneStop;
    return settings;
}

// XModem sends none.
QString nameForNow()
{
    return QStringLiteral("XModem_%1.bin")
        .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_hhmmss")));
}

int percentOf(qint64 done, qint64 size)
{
    return size < 0 ? -1 : size == 0 ? 100 : static_cast<int>(done * 100 / size);
}

QString endText(Ymodem::Status status)
{
    switch (status) {
    case Ymodem::Finish:
        return QStringLiteral("\n传输完成");
    case Ymodem::Abort:
        return QStringLiteral("传输终止");
    case Ymodem::Timeout:
        return QStringLiteral("传输超时");
    default:
        return QStringLiteral("传输错误");
    }
}

} // namespace

FileTransfer::FileTransfer(SerialLink *link, QuietReader *reader, FileSendPage *view, QObject *parent)
    : QObject(parent)
    , m_link(link)
    , m_reader(reader)
    , m_view(view)
{
    connect(m_link, &SerialLink::drained, this, &FileTransfer::begin);
    connect(m_link, &Link::received, this, [this](const QByteArray &bytes) { m_lastByte = bytes.back(); });
    // Queued: the page hears of it while the transfer is still going on.
    connect(
        m_link, &Link::stateChanged, this,
        [this] {
            if (m_draining && !m_link->isOpen())
                endEarly(Ymodem::Error, QStringLiteral("串口已断开"));
        },
        Qt::QueuedConnection);
    connect(m_view->receiveButton(), &QPushButton::clicked, this, [this] { isBusy() ? stop() : receive(); });
}

FileTransfer::~FileTransfer() = default;

YmodemFileTransmit *FileTransfer::create(QObject *parent)
{
    m_driver = new YmodemFileTransmit(parent);
    connect(m_driver, &YmodemFileTransmit::passedOn, this, &FileTransfer::passOn);
    connect(m_driver, &YmodemFileTransmit::transmitHint, this, &FileTransfer::showHint);
    return m_driver;
}

void FileTransfer::makeReceiver()
{
    if (m_receive)
        return;
    m_receive = std::make_unique<FileReceive>();
    connect(m_receive.get(), &FileReceive::fileStarted, this, [this](const QString &name) {
        m_view->appendText(QStringLiteral("\n开始接收文件->\n%1").arg(name));
        showAmount(0, name);
    });
    connect(m_receive.get(), &FileReceive::progressed, this,
            [this](const QString &name) { showAmount(m_receive->bytesDone(), name); });
    connect(m_receive.get(), &FileReceive::fileReceived, this, [this](const QString &path) {
        m_view->appendText(QStringLiteral("已保存：%1").arg(QDir::toNativeSeparators(path)));
    });
    connect(m_receive.get(), &FileReceive::passedOn, this, &FileTransfer::passOn);
    connect(m_receive.get(), &FileReceive::ended, this,
            [this](Ymodem::Status status) { handleStatus(status, QString()); });
}

void FileTransfer::makeRawSender()
{
    if (m_raw)
        return;
    m_raw = std::make_unique<RawFileSend>();
    connect(m_raw.get(), &RawFileSend::fileStarted, this, [this](const QString &name) {
        m_view->appendText(QStringLiteral("\n开始发送文件->\n%1").arg(name));
    });
    connect(m_raw.get(), &RawFileSend::progressed, this,
            [this](const QString &name) { showAmount(m_raw->bytesDone(), name); });
    connect(m_raw.get(), &RawFileSend::ended, this,
            [this](Ymodem::Status status) { handleStatus(status, QString()); });
}

// ---- start and end

void FileTransfer::start(int protocol, int packetLength, const QStringList &files)
{
    const TransferOptions *options = m_view->options();
    if (options->isRaw()) {
        makeRawSender();
        m_rawFiles = files;
        m_view->setSending(true);
        return prepare(m_raw.get());
    }
    const bool isXmodem = protocol == 0;
    QStringList wanted = files;
    if (isXmodem && files.size() > 1)
        wanted = QStringList(m_view->selectedFile());
    if (wanted.value(0).isEmpty())
        return emit notify(Notice::error(QStringLiteral("XModem每次只能发送一个文件，请在列表中选中它")));
    using Protocol = YmodemFileTransmit::Protocol;
    m_driver->setProtocol(isXmodem ? Protocol::Xmodem : Protocol::Ymodem, packetLength);
    m_driver->setQuick(options->isQuick());
    m_driver->setFileList(wanted);
    m_driver->setPortName(m_link->settings().name);
    m_driver->setBaudRate(m_link->settings().baudRate);
    m_view->setSending(true); // before the device counts as closed: the button keeps the focus
    prepare(m_driver);
}

void FileTransfer::receive()
{
    if (isBusy() || !m_link->isOpen())
        return;
    const QString folder = m_view->options()->receiveFolder();
    if (folder.isEmpty() || !m_link->isOpen()) // while it was asked for
        return;
    makeReceiver();
    m_target = {folder, m_view->options()->maxReceivedBytes(), nameForNow()};
    m_view->setReceiving(true);
    prepare(m_receive.get());
}

void FileTransfer::prepare(TransferDriver *driver)
{
    m_active = driver;
    m_draining = true;
    m_lastByte = m_reader->lastByte();
    m_endShown = false;
    m_earlyReason.clear();
    m_pageSettings = m_link->settings();
    emit started();
    m_link->drain();
}

// The page's last bytes have left.
void FileTransfer::begin()
{
    m_draining = false;
    // What has been received so far is the page's: the protocol would read a
    // letter as a refusal. A receiver's request at its end may be the only one.
    const bool isRequested = m_lastByte == static_cast<char>(Ymodem::Request);
    if (m_active->usesInput()) {
        m_reader->setActive(false);
        m_link->apply(transferSettings(m_pageSettings));
    }
    if (startDriver(isRequested ? QByteArray(1, Ymodem::Request) : QByteArray()))
        qDebug() << "startTransmit ok! " << m_pageSettings.name << m_pageSettings.baudRate;
    else
        endEarly(Ymodem::Error,
                 m_active->reason().isEmpty() ? QStringLiteral("串口已断开") : m_active->reason());
}

bool FileTransfer::startDriver(const QByteArray &arrived)
{
    if (m_active == m_driver)
        return m_driver->startTransmit(m_link, arrived);
    const TransferOptions *options = m_view->options();
    if (isReceiving()) {
        using Protocol = ModemReceiver::Protocol;
        const Protocol protocol = m_view->protocol() == 0 ? Protocol::Xmodem : Protocol::Ymodem;
        return m_receive->start(m_link, {protocol}, m_target);
    }
    const auto unit = options->rawCountsLines() ? RawFileSend::Pace::Lines : RawFileSend::Pace::Bytes;
    return m_raw->start(m_link, m_rawFiles, {unit, options->rawCount(), options->rawMs()});
}

// Before the driver has begun.
void FileTransfer::endEarly(Ymodem::Status status, const QString &reason)
{
    qDebug() << "startTransmit falied!";
    m_draining = false;
    m_link->cancelDrain();
    m_earlyReason = reason;
    handleStatus(status, QString());
}

void FileTransfer::stop()
{
    if (m_draining)
        endEarly(Ymodem::Abort, QStringLiteral("用户停止了传输"));
    else if (m_active)
        m_active->stop();
}

void FileTransfer::abandon()
{
    m_active = nullptr;
    m_receive.reset();
    m_raw.reset();
    delete std::exchange(m_driver, nullptr);
}

void FileTransfer::showProgress(int percent, const QString &name)
{
    m_view->setProgress(percent, name);
    if (m_driver)
        m_view->setAmount(m_driver->bytesSent(), m_driver->fileSize());
}

void FileTransfer::showAmount(qint64 done, const QString &name)
{
    const qint64 size = m_active->fileSize();
    m_view->setProgress(percentOf(done, size), name);
    m_view->setAmount(done, size);
}

// It belongs to no packet: the display shows it at once.
void FileTransfer::passOn(const QByteArray &bytes)
{
    m_reader->append(bytes);
    m_reader->endPacket();
}

void FileTransfer::handleStatus(Ymodem::Status status, const QString &name)
{
    if (status == Ymodem::Establish) {
        m_view->appendText(QStringLiteral("\n开始传输文件->\n%1").arg(name));
        m_view->appendText(QStringLiteral("握手成功"));
        return;
    }
    if (status == Ymodem::Transmit)
        return;
    if (!m_endShown) {
        giveReceivedToPage();
        showEnd(status);
    }
    m_endShown = isBusy();
    if (!m_endShown) {
        release();
        qDebug() << (status == Ymodem::Finish ? "file send success!" : "file send failed!");
    }
}

void FileTransfer::giveReceivedToPage()
{
    m_reader->setActive(true);
    if (m_active)
        m_reader->append(m_active->takeUnused());
}

void FileTransfer::showEnd(Ymodem::Status status)
{
    m_view->appendText(endText(status));
    m_view->setEnd(endText(status).trimmed(), status == Ymodem::Finish);
    const QString reason = m_earlyReason.isEmpty() && m_active ? m_active->reason() : m_earlyReason;
    if (!reason.isEmpty())
        m_view->appendText(reason);
    const QStringList incomplete = m_active ? m_active->incompleteFiles() : QStringList();
    for (const QString &file : incomplete)
        m_view->appendText(QStringLiteral("未完成：%1").arg(file));
    if (status == Ymodem::Finish && reason.isEmpty())
        emit notify(Notice::information(isReceiving() ? QStringLiteral("文件接收完成！")
                                                      : QStringLiteral("文件传输完成！")));
    else if (status == Ymodem::Finish)
        emit notify(Notice::error(QStringLiteral("文件传输完成！%1").arg(reason)));
    else
        emit notify(Notice::error(QStringLiteral("%1：%2").arg(endText(status), reason)));
}

void FileTransfer::showHint(const QString &text)
{
    m_view->appendText(text);
    emit notify(Notice::error(text));
}

void FileTransfer::release()
{
    m_reader->stop();
    if (m_link->isOpen()) {
        m_link->apply(m_pageSettings); // a refusal was reported when it was opened
        qDebug() << "serial is opne";
    } else if (!m_link->open(m_pageSettings,
                             SerialLink::Refusal::KeepsOpen)) { // a board that was reset may be back
        qDebug() << "opne serial failure";
    }
    emit ended();
    m_view->setSending(false);
    m_view->setReceiving(false);
}

void FileTransfer::showLog(QWidget *parent) const
{
    if (!m_active)
        return;
    TransferLogDialog dialog(m_active->log().text(), parent);
    dialog.exec();
}
