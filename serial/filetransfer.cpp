#include "filetransfer.h"

#include "filesendpage.h"
#include "portname.h"
#include "qextserialport.h"
#include "serialconfigpanel.h"
#include "transferlogdialog.h"

#include <QDebug>

#include <utility>

namespace {

QSerialPort::Parity parityOf(int index)
{
    static const QSerialPort::Parity values[] = {QSerialPort::NoParity, QSerialPort::OddParity,
                                                 QSerialPort::EvenParity, QSerialPort::MarkParity,
                                                 QSerialPort::SpaceParity};
    return index >= 0 && index < 5 ? values[index] : QSerialPort::NoParity;
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

FileTransfer::FileTransfer(QextSerialPort *port, const SerialConfigPanel *config, FileSendPage *view,
                           QObject *parent)
    : QObject(parent)
    , m_port(port)
    , m_config(config)
    , m_view(view)
{
    connect(m_port, &QextSerialPort::lent, this, &FileTransfer::begin);
}

YmodemFileTransmit *FileTransfer::create(QObject *parent)
{
    m_driver = new YmodemFileTransmit(parent);
    connect(m_driver, &YmodemFileTransmit::transmitHint, this, &FileTransfer::showHint);
    return m_driver;
}

void FileTransfer::start(const QStringList &files)
{
    m_lending = true;
    m_endShown = false;
    m_earlyReason.clear();
    m_driver->setFileList(files);
    m_driver->setPortName(PortName::device(m_port->portName()));
    m_driver->setBaudRate(m_port->baudRate());
    m_driver->setFrame(m_config->stopBitsIndex() == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop,
                       parityOf(m_config->parityIndex()));
    m_view->setSending(true); // before the device counts as closed: the button keeps the focus
    emit handedOver();
    m_port->lend();
}

// The port's last bytes have left; null when the device has gone.
void FileTransfer::begin(QSerialPort *port, qint64 unsentBytes)
{
    m_lending = false;
    if (unsentBytes > 0)
        emit notify(Notice::error(m_port->unsentText(unsentBytes)));
    // What has come in meanwhile is the page's: the protocol would take a letter
    // for a refusal. A receiver's request at its end may be the only one.
    const bool isRequested = port && port->peek(port->bytesAvailable()).endsWith(Ymodem::Request);
    emit readDue();
    if (isRequested)
        port->ungetChar(Ymodem::Request);
    if (port && m_driver->startTransmit(port)) {
        qDebug() << "startTransmit ok! " << m_port->portName() << m_port->baudRate();
        return;
    }
    qDebug() << "startTransmit falied!";
    endEarly(Ymodem::Error, QStringLiteral("串口已断开"));
}

// Before the driver has begun.
void FileTransfer::endEarly(Ymodem::Status status, const QString &reason)
{
    m_lending = false;
    m_earlyReason = reason;
    takeStatus(status, QString());
}

void FileTransfer::stop()
{
    if (m_lending)
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

void FileTransfer::takeStatus(Ymodem::Status status, const QString &name)
{
    if (status == Ymodem::Establish) {
        m_view->appendText(QStringLiteral("\n开始传输文件->\n%1").arg(name));
        m_view->appendText(QStringLiteral("握手成功"));
        return;
    }
    if (status == Ymodem::Transmit)
        return;
    if (!m_endShown)
        showEnd(status);
    m_endShown = isBusy();
    if (!m_endShown) {
        takeBack();
        qDebug() << (status == Ymodem::Finish ? "file send success!" : "file send failed!");
    }
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

void FileTransfer::takeBack()
{
    emit readDue(); // a board that has reset itself may be gone
    if (m_port->takeBack())
        qDebug() << "serial is opne";
    else if (!m_port->open(QIODevice::ReadWrite)) // a board that was reset may be back
        qDebug() << "opne serial failure";
    emit returned(m_port->isOpen());
    m_view->setSending(false);
}

void FileTransfer::showLog(QWidget *parent) const
{
    if (!m_driver)
        return;
    TransferLogDialog dialog(m_driver->log().text(), parent);
    dialog.exec();
}
