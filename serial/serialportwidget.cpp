#include "serialportwidget.h"

#include "filetransfer.h"
#include "portname.h"
#include "qextserialport.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtterminalwidget.h"
#include "quietreader.h"
#include "receivestore.h"
#include "recvoptions.h"
#include "sendoptions.h"
#include "serialconfigpanel.h"
#include "stateindicator.h"
#include "workarea.h"

#include <QDebug>
#include <QTime>
#include <utility>

namespace {

// A device that takes nothing gets no more than this queued.
constexpr qint64 kMostToWrite = 16LL * 1024 * 1024;

} // namespace

SerialportWidget::SerialportWidget(QWidget *parent)
    : QtWidgetBase(parent)
    , m_port(std::make_unique<QextSerialPort>(QextSerialPort::EventDriven))
{
    setObjectName(QStringLiteral("SerialportWidget"));
    buildUi();
    m_reader = new QuietReader(
        m_port.get(), [this] { return m_terminal->queuedBytes(); }, this);
    m_transfer = new FileTransfer(m_port.get(), m_config, m_sendBox->filePage(), this);
    connectParts();
    setPortState(false);
    showCounts();
}

SerialportWidget::~SerialportWidget()
{
    blockSignals(true); // what still waits in the port is taken in, but told to nobody
    m_port->disconnect(this);
    m_transfer->abandon();
    closePort();
}

// ---- the port

void SerialportWidget::SltOpenSerialport()
{
    if (m_transfer->isBusy() || m_closing) {
        notify(Notice::information(
            m_closing ? QStringLiteral("串口[%1]正在发送剩余数据，请稍候").arg(m_port->portName())
                      : QStringLiteral("正在传输文件，停止发送后才能关闭串口")));
        return;
    }
    if (m_port->isOpen()) {
        m_closingNotice = QStringLiteral("串口[%1]已关闭!!").arg(m_port->portName());
        closePort();
        return;
    }
    const QString entry = m_config->portText();
    if (entry.isEmpty()) {
        notify(Notice::error(QStringLiteral("当前系统未检测到任何串口，请重试!!!")));
        return;
    }
    const QString name = PortName::fromEntry(entry);
    if (name.isEmpty()) {
        notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(entry)));
        return;
    }
    if (m_config->baudRate() <= 0) {
        notify(Notice::error(QStringLiteral("波特率为空或不是正整数，串口未打开！")));
        return;
    }
    m_port->setPortName(name);
    if (!m_port->open(QIODevice::ReadWrite)) {
        notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(entry)));
        notify(Notice::error(m_port->reason()));
        return;
    }
    const QStringList refused = applyParameters();
    setPortState(true);
    notify(Notice::information(QStringLiteral("串口[%1]打开成功!").arg(name)));
    if (!refused.isEmpty())
        notify(Notice::error(
            QStringLiteral("串口[%1]不支持以下参数：%2").arg(name, refused.join(QStringLiteral("、")))));
    m_config->rememberDefaults();
}

// Sets the open port's parameters in order; those that the device refuses
// leave the port open and are named.
QStringList SerialportWidget::applyParameters()
{
    m_writeBlockedTold = false;
    QStringList refused;
    if (!m_port->setBaudRate(m_config->baudRate()))
        refused.append(QStringLiteral("波特率 %1").arg(m_config->baudRate()));
    if (!m_port->setDataBits(m_config->dataBits()))
        refused.append(QStringLiteral("数据位 %1").arg(m_config->dataBits()));
    if (!m_port->setStopBits(m_config->stopBitsIndex()))
        refused.append(QStringLiteral("停止位 %1").arg(m_config->stopBitsText()));
    if (!m_port->setParity(m_config->parityIndex()))
        refused.append(m_config->parityText());
    m_port->setFlowControlOff();
    return refused;
}

void SerialportWidget::setPortState(bool open)
{
    m_config->setOpenState(open);
    if (!open && m_defaultsDue)
        reloadSettings();
    m_sendBox->setDeviceOpen(open);
    m_state->setOn(open);
    m_area->showHint(open);
}

// Takes in what has already arrived, then closes; what was written leaves first.
void SerialportWidget::closePort()
{
    if (!m_port->isOpen())
        return;
    m_reader->stop();
    m_closing = true;
    m_port->close();
    if (!m_closing)
        return;
    m_sendBox->setDeviceOpen(false);
    m_state->setOn(false);
    m_config->setClosing();
}

void SerialportWidget::portClosed(qint64 unsentBytes)
{
    if (!std::exchange(m_closing, false))
        return; // not by this page
    setPortState(false);
    const QString notice = std::exchange(m_closingNotice, QString());
    if (!notice.isEmpty())
        notify(Notice::information(notice));
    if (unsentBytes > 0)
        notify(Notice::error(m_port->unsentText(unsentBytes)));
    emit signalClosed();
}

void SerialportWidget::portVanished()
{
    if (!m_port->isOpen())
        return;
    closePort();
    notify(Notice::error(QStringLiteral("当前串口已拔出，请重新打开!")));
}

void SerialportWidget::SltSerialportChanged(QStringList serialports)
{
    m_config->setPorts(serialports);
    if (!m_port->isOpen())
        return;
    // By the bare name against whole entries: an entry with a description
    // never matches, so that any change of the list closes the port.
    if (serialports.contains(m_port->portName(), Qt::CaseSensitive))
        m_config->selectEntry(m_port->portName());
    else
        portVanished();
}

// ---- receiving

void SerialportWidget::sltInterruptDetection()
{
    m_reader->handleArrival();
}

void SerialportWidget::SltDelayChanged()
{
    m_reader->setQuietTime(m_recvOptions->quietTime());
}

void SerialportWidget::SltRecvFromSerialport()
{
    m_reader->takePacket();
}

void SerialportWidget::handleReceived(const QByteArrayList &pieces, qint64 size)
{
    m_recvCount += static_cast<quint32>(size);
    m_area->refreshCounts();
    if (m_recvOptions->stopShow()) {
        m_received->setHidden();
        return;
    }
    const bool hex = m_recvOptions->hexShow();
    if (m_recvOptions->logMode()) {
        m_terminal->insertRecvData(pieces.join(), hex, m_recvOptions->timeStamp());
        return;
    }
    QString header;
    if (m_recvOptions->timeStamp())
        header = QTime::currentTime().toString(QStringLiteral("[hh:mm:ss.zzz]")) +
                 (hex ? QStringLiteral(" HEX >\n") : QStringLiteral(" ASCII >\n"));
    for (const QByteArray &piece : pieces)
        m_terminal->showReceived(piece, std::exchange(header, QString()), hex);
}

void SerialportWidget::clearRecv()
{
    m_received->clear();
}

// ---- sending

void SerialportWidget::SltWriteDataToSerialport(QByteArray byCmd)
{
    if (!m_port->isOpen())
        return;
    if (m_port->bytesToWrite() + byCmd.size() > kMostToWrite) {
        if (!m_writeBlockedTold)
            notify(Notice::error(QStringLiteral("设备长时间未接收数据，本次数据未发送！")));
        m_writeBlockedTold = true;
        return;
    }
    m_writeBlockedTold = false;
    if (m_port->write(byCmd) < 0) {
        writeFailed(byCmd.size());
        return;
    }
    m_sendCount += static_cast<quint32>(byCmd.size());
    m_area->refreshCounts();
}

void SerialportWidget::writeFailed(qint64 unsentBytes)
{
    notify(Notice::error(m_port->writeFailedText(unsentBytes)));
}

void SerialportWidget::SltChangeSendPage(int index)
{
    m_area->showSendPage(index);
}

void SerialportWidget::SltChangeAutoInterval()
{
    m_sendOptions->applyInterval();
}

void SerialportWidget::sltShowErrorHint()
{
    QtMessageTip::showTip(QStringLiteral("当前在十六进制输入模式下，只能输入十六进制的字符。"));
}

// ---- sending files

// Protocol and packet length change nothing: every transfer is a YModem batch
// whose block sizes follow from the files.
void SerialportWidget::sltSendXYmodemFile(int, int, QStringList fileName)
{
    if (fileName.isEmpty()) {
        m_transfer->stop();
        return;
    }
    if (!m_transfer->driver()) {
        const YmodemFileTransmit *driver = m_transfer->create(this);
        connect(driver, &YmodemFileTransmit::transmitProgress, this, &SerialportWidget::sltTransmitProgress);
        connect(driver, &YmodemFileTransmit::transmitStatus, this, &SerialportWidget::sltTransmitStatus);
    }
    if (m_transfer->isBusy() || !m_port->isOpen())
        return;
    m_transfer->start(fileName);
}

void SerialportWidget::sltTransmitProgress(int porgress, QString name)
{
    m_transfer->showProgress(porgress, name);
}

void SerialportWidget::sltTransmitStatus(YmodemFileTransmit::Status status, QString name)
{
    m_transfer->takeStatus(status, name);
}

void SerialportWidget::givePortAway()
{
    m_sendBox->setDeviceOpen(false);
    m_config->setHandedOver(true);
}

void SerialportWidget::takePortBack(bool open)
{
    m_config->setHandedOver(false);
    if (open)
        applyParameters(); // a refusal was told when the port was first opened
    setPortState(open);
    if (std::exchange(m_ending, false)) {
        closePort();
        if (isClosed())
            emit signalClosed();
        return;
    }
    if (open) {
        sltInterruptDetection(); // what comes in from now on
        return;
    }
    notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(m_port->portName())));
    notify(Notice::error(m_port->reason()));
}

// ---- counts

QStringList SerialportWidget::counts() const
{
    return {QString::number(m_sendCount), QString::number(m_recvCount)};
}

void SerialportWidget::clearCounts()
{
    m_sendCount = 0;
    m_recvCount = 0;
    showCounts();
}

void SerialportWidget::showCounts()
{
    m_area->showCounts(m_sendCount, m_recvCount);
    emit signalRefresCounts(pageIndex);
}

void SerialportWidget::SltSaveDataToFile()
{
    m_received->save();
}

bool SerialportWidget::mayClose()
{
    if (m_port->isOpen())
        SltRecvFromSerialport();
    if (m_transfer->isBusy() &&
        QtMessageBox::question(this, QStringLiteral("询问"),
                               QStringLiteral("正在传输文件，是否终止传输并退出？")) == 0)
        return false;
    return m_received->mayClose();
}

void SerialportWidget::closeLinks()
{
    m_ending = m_transfer->isBusy();
    if (m_ending)
        m_transfer->stop(); // takePortBack() closes
    else
        closePort();
}

bool SerialportWidget::isClosed() const
{
    return !m_port->isOpen() && !m_closing && !m_transfer->isBusy();
}

bool SerialportWidget::saveBeforeExit()
{
    if (m_port->isOpen())
        SltRecvFromSerialport();
    return m_received->saveBeforeExit() && m_sendBox->saveBeforeExit();
}

const ByteSpool &SerialportWidget::spool() const
{
    return m_received->spool();
}

void SerialportWidget::reloadSettings()
{
    // The parameters shown are those of the port, which a transfer gives back.
    m_defaultsDue = m_port->isOpen() || m_closing || m_transfer->isBusy();
    if (!m_defaultsDue)
        m_config->loadDefaults();
}

void SerialportWidget::SltBtnFoldClicked()
{
    m_area->fold();
}
