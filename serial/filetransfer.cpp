#include "serial/filetransfer.h"

#include "serial/filesendpage.h"
#include "serial/portname.h"
#include "serial/qextserialport.h"
#include "serial/serialconfigpanel.h"
#include "serial/transferlogdialog.h"

#include <QDebug>

namespace {

constexpr int kInformation = 0;
constexpr int kError = 255;

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
}

YmodemFileTransmit *FileTransfer::create(QObject *parent)
{
    m_driver = new YmodemFileTransmit(parent);
    return m_driver;
}

void FileTransfer::start(const QStringList &files)
{
    const QString name = m_port->portName();
    const int baudRate = m_port->baudRate();
    m_port->close();
    m_view->setSending(true); // before the device counts as closed: the button keeps the focus
    emit handedOver();
    m_endShown = false;
    m_driver->setFileList(files);
    m_driver->setPortName(PortName::device(name));
    m_driver->setBaudRate(baudRate);
    m_driver->setFrame(m_config->stopBitsIndex() == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop,
                       parityOf(m_config->parityIndex()));
    if (m_driver->startTransmit()) {
        qDebug() << "startTransmit ok! " << name << baudRate;
        return;
    }
    qDebug() << "startTransmit falied!";
    takeStatus(Ymodem::Error, QString());
}

void FileTransfer::stop()
{
    if (m_driver)
        m_driver->stopTransmit();
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
    const QString reason = m_driver ? m_driver->reason() : QString();
    if (!reason.isEmpty())
        m_view->appendText(reason);
    const QStringList unsent = m_driver ? m_driver->unsentFiles() : QStringList();
    for (const QString &file : unsent)
        m_view->appendText(QStringLiteral("未完成: %1").arg(file));
    if (status == Ymodem::Finish && reason.isEmpty())
        emit notify(QStringLiteral("文件传输完成！"), kInformation);
    else if (status == Ymodem::Finish)
        emit notify(QStringLiteral("文件传输完成！%1").arg(reason), kError);
    else
        emit notify(QStringLiteral("%1: %2").arg(endText(status), reason), kError);
}

void FileTransfer::takeBack()
{
    if (m_port->isOpen())
        qDebug() << "serial is opne";
    else if (!m_port->open(QIODevice::ReadWrite))
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
