#include "filetransfer.h"

#include "filesendpage.h"
#include "quietreader.h"
#include "transferlogdialog.h"

#include <QDebug>

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
}

YmodemFileTransmit *FileTransfer::create(QObject *parent)
{
    m_driver = new YmodemFileTransmit(parent);
    connect(m_driver, &YmodemFileTransmit::transmitHint, this, &FileTransfer::showHint);
    return m_driver;
}

void FileTransfer::start(const QStringList &files)
{
    m_draining = true;
    m_lastByte = m_reader->lastByte();
    m_endShown = false;
    m_earlyReason.clear();
    m_pageSettings = m_link->settings();
    m_driver->setFileList(files);
    m_driver->setPortName(m_pageSettings.name);
    m_driver->setBaudRate(m_pageSettings.baudRate);
    m_view->setSending(true); // before the device counts as closed: the button keeps the focus
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
    m_reader->setActive(false);
    m_link->apply(transferSettings(m_pageSettings));
    if (m_driver->startTransmit(m_link, isRequested ? QByteArray(1, Ymodem::Request) : QByteArray()))
        qDebug() << "startTransmit ok! " << m_pageSettings.name << m_pageSettings.baudRate;
    else
        endEarly(Ymodem::Error, QStringLiteral("串口已断开"));
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
    else if (m_driver)
        m_driver->stopTransmit();
}

void FileTransfer::abandon()
{
    delete std::exchange(m_driver, nullptr);
}

void FileTransfer::showProgress(int percent, const QString &name)
{
    m_view->setProgress(percent, name);
    if (m_driver)
        m_view->setAmount(m_driver->bytesSent(), m_driver->fileSize());
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
    if (m_driver)
        m_reader->append(m_driver->takeUnused());
}

void FileTransfer::showEnd(Ymodem::Status status)
{
    m_view->appendText(endText(status));
    m_view->setEnd(endText(status).trimmed(), status == Ymodem::Finish);
    const QString reason = m_earlyReason.isEmpty() && m_driver ? m_driver->reason() : m_earlyReason;
    if (!reason.isEmpty())
        m_view->appendText(reason);
    const QStringList unsent = m_driver ? m_driver->unsentFiles() : QStringList();
    for (const QString &file : unsent)
        m_view->appendText(QStringLiteral("未完成：%1").arg(file));
    if (status == Ymodem::Finish && reason.isEmpty())
        emit notify(Notice::information(QStringLiteral("文件传输完成！")));
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
}

void FileTransfer::showLog(QWidget *parent) const
{
    if (!m_driver)
        return;
    TransferLogDialog dialog(m_driver->log().text(), parent);
    dialog.exec();
}
