#include "serialportwidget.h"

#include "answerpanel.h"
#include "commandpage.h"
#include "fieldmemory.h"
#include "filesendpage.h"
#include "filetransfer.h"
#include "formpanel.h"
#include "launchoptions.h"
#include "linesgroup.h"
#include "logpanel.h"
#include "profilebutton.h"
#include "qextserialport.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtterminalwidget.h"
#include "quietreader.h"
#include "receivestore.h"
#include "recvoptions.h"
#include "sendoptions.h"
#include "serialconfigpanel.h"
#include "serialreconnector.h"
#include "settings.h"
#include "stateindicator.h"
#include "workarea.h"

#include <QPushButton>
#include <QTime>

#include <utility>

SerialportWidget::SerialportWidget(QWidget *parent)
    : QtWidgetBase(parent)
    , m_port(std::make_unique<QextSerialPort>(QextSerialPort::EventDriven))
{
    setObjectName(QStringLiteral("SerialportWidget"));
    m_port->setTool(QStringLiteral("串口调试助手"));
    m_port->setOpensLater(true);
    buildUi();
    m_reader = new QuietReader(
        m_port.get(), [this] { return m_terminal->queuedBytes(); }, this);
    m_reconnector = new SerialReconnector(m_port.get(), this);
    m_reconnector->setEnabled(m_config->reconnects());
    m_transfer = new FileTransfer(m_port.get(), m_reader, m_sendBox->filePage(), this);
    connectParts();
    m_memory = new FieldMemory(this);
    m_recvOptions->remember(m_memory, &Settings::instance().serialArea);
    m_sendOptions->remember(m_memory, &Settings::instance().serialArea, &Settings::instance().serialSend);
    m_area->remember(&Settings::instance().serialArea);
    SltDelayChanged();
    setPortState(false);
    showCounts();
}

SerialportWidget::~SerialportWidget()
{
    blockSignals(true); // what still arrives is recorded without a notice
    m_transfer->abandon();
    if (m_port->isOpen())
        m_port->close();
    m_port->disconnect(this);
}

void SerialportWidget::buildUi()
{
    m_area = new WorkArea(QtSendBoxWidget::Serial, QStringLiteral("serial"),
                          QStringLiteral("选择端口并打开串口后，接收到的数据将显示在这里"),
                          QStringLiteral("串口已打开，正在等待数据"), this);
    m_terminal = m_area->terminal();
    m_received = m_area->received();
    m_sendBox = m_area->sendBox();
    m_state = m_area->state();

    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("configPanel"));
    m_config = new SerialConfigPanel(m_panel);
    m_recvOptions = new RecvOptions(m_panel);
    m_sendOptions = new SendOptions(m_sendBox, m_panel);
    m_lines = new LinesGroup(m_port.get(), m_panel);
    m_log = new LogPanel(&Settings::instance().serialLog, m_area);
    m_area->addTool(m_log->button());
    m_area->addBar(m_log);
    m_answers =
        new AnswerPanel(&Settings::instance().serialAnswers, QStringLiteral("ser_answers.json"), m_area);
    m_area->addCommand(m_answers->action());
    m_area->addBar(m_answers);
    m_panel->addWidget(m_config);
    m_panel->addWidget(m_recvOptions);
    m_panel->addWidget(m_sendOptions);
    m_panel->addWidget(m_lines);
    m_profiles = new ProfileButton(
        QStringLiteral("serial"),
        {{QStringLiteral("SerialPage"), QStringLiteral("SerialSend")}, {QStringLiteral("Serialport")}},
        m_area);
    m_area->addTool(m_profiles);
    m_area->placeBeside(m_panel, m_lines->lastField());
    setPageKeys(m_config->openButton(), m_area->foldButton());
}

void SerialportWidget::connectParts()
{
    connect(m_port.get(), &Link::received, this, &SerialportWidget::sltInterruptDetection);
    connect(m_port.get(), &Link::stateChanged, this, &SerialportWidget::handlePortState);
    connect(m_port.get(), &SerialLink::failed, this,
            [this](const QString &notice) { notify(Notice::error(notice)); });
    connect(m_reader, &QuietReader::quiet, this, &SerialportWidget::SltRecvFromSerialport);
    connect(m_reader, &QuietReader::pieceRead, m_received, &ReceiveStore::add);
    connect(m_reader, &QuietReader::packetRead, this, &SerialportWidget::handleReceived);
    connect(m_reader, &QuietReader::gathering, m_area, &WorkArea::showGathering);
    connect(m_area, &WorkArea::countsDue, this, &SerialportWidget::showCounts);

    connect(m_reconnector, &SerialReconnector::waitingChanged, this, &SerialportWidget::handleWaiting);
    connect(m_reconnector, &SerialReconnector::reasonChanged, this, [this] {
        notify(Notice::error(QStringLiteral("串口[%1]暂时无法打开，仍在等待：%2")
                                 .arg(m_reconnector->portName(), m_reconnector->reason())));
    });
    connect(m_config, &SerialConfigPanel::reconnectChanged, m_reconnector, &SerialReconnector::setEnabled);

    m_profiles->setRefusal([this] {
        return isClosed() && !m_reconnector->isWaiting() ? QString() : QStringLiteral("请先关闭串口");
    });
    connect(m_profiles, &ProfileButton::collecting, m_config, &SerialConfigPanel::storeChosen);
    connect(m_profiles, &ProfileButton::chosen, this, &SerialportWidget::loadFields);
    connect(m_profiles, &ProfileButton::notify, this, &SerialportWidget::notify);
    m_log->log()->watch(m_port.get(), [this] { return m_port->settings().name; });
    connect(m_log, &LogPanel::notify, this, &SerialportWidget::notify);
    connect(m_log, &LogPanel::stateChanged, this, &SerialportWidget::signalLogState);
    m_answers->answers()->watch(
        m_port.get(), LinkAnswers::Delivery::Stream,
        [this](const QByteArray &bytes, const Peer &) { return sendBytes(bytes) > 0; });
    connect(m_answers, &AnswerPanel::notify, this, &SerialportWidget::notify);
    connect(m_answers, &AnswerPanel::stateChanged, this, &SerialportWidget::signalAnswerState);
    connect(m_config, &SerialConfigPanel::openClicked, this, &SerialportWidget::SltOpenSerialport);
    connect(m_recvOptions, &RecvOptions::clearClicked, this, &SerialportWidget::clearRecv);
    connect(m_recvOptions, &RecvOptions::stopShowChanged, m_area, &WorkArea::showStopped);
    connect(m_area, &WorkArea::resumeRequested, m_recvOptions, &RecvOptions::resumeShow);
    connect(m_recvOptions, &RecvOptions::saveClicked, this, &SerialportWidget::SltSaveDataToFile);
    connect(m_recvOptions, &RecvOptions::delayChanged, this, &SerialportWidget::SltDelayChanged);
    connect(m_sendOptions, &SendOptions::pageChosen, this, &SerialportWidget::SltChangeSendPage);
    connect(m_sendOptions, &SendOptions::intervalEdited, this, &SerialportWidget::SltChangeAutoInterval);
    connect(m_area->foldButton(), &QPushButton::clicked, this, &SerialportWidget::SltBtnFoldClicked);
    connect(m_sendBox, &QtSendBoxWidget::signalSendData, this, &SerialportWidget::SltWriteDataToSerialport);
    CommandRunner *runner = m_sendBox->commandPage()->runner();
    runner->setDevice(
        [this](const QByteArray &bytes, QString *reason) {
            const bool isSent = sendBytes(bytes) > 0;
            if (!isSent)
                *reason = m_port->refusal().isEmpty() ? QStringLiteral("设备未接收") : m_port->refusal();
            return isSent;
        },
        [this] { return m_port->pendingBytes(); });
    connect(m_port.get(), &Link::received, runner, &CommandRunner::receive);
    connect(m_sendBox, &QtSendBoxWidget::showErrorHint, this, &SerialportWidget::sltShowErrorHint);
    connect(m_area, &WorkArea::codecWanted, this, &SerialportWidget::signalCodecWanted);
    connect(m_area, &WorkArea::notify, this, &SerialportWidget::notify);
    connect(m_area, &WorkArea::clearRequested, this, &SerialportWidget::clearRecv);
    connect(m_sendBox, &QtSendBoxWidget::signalSendFile, this, &SerialportWidget::sltSendXYmodemFile);
    connect(m_sendBox->filePage()->logButton(), &QPushButton::clicked, this,
            [this] { m_transfer->showLog(this); });
    connect(m_transfer, &FileTransfer::started, this, &SerialportWidget::beginTransfer);
    connect(m_transfer, &FileTransfer::ended, this, &SerialportWidget::endTransfer);
    connect(m_transfer, &FileTransfer::notify, this, &SerialportWidget::notify);
}

void SerialportWidget::launch(const LaunchOptions &options)
{
    QString reason;
    if (!options.profile.isEmpty() && !m_profiles->choose(options.profile, &reason))
        notify(Notice::error(QStringLiteral("方案[%1]未选用：%2").arg(options.profile, reason)));
    if (!options.port.isEmpty())
        m_config->choosePort(options.port);
    if (options.baudRate > 0)
        m_config->chooseBaudRate(options.baudRate);
    if (!options.logFile.isEmpty())
        m_log->record(options.logFile);
    if (options.opens && isClosed())
        openPort();
}

// ---- the port

void SerialportWidget::SltOpenSerialport()
{
    if (m_transfer->isBusy()) {
        notify(Notice::information(QStringLiteral("正在传输文件，停止发送后才能关闭串口")));
    } else if (m_reconnector->isWaiting()) {
        m_reconnector->cancel();
        notify(Notice::information(QStringLiteral("已停止等待串口[%1]").arg(m_reconnector->portName())));
    } else if (m_port->state() == Link::State::Closing) {
        notify(Notice::information(
            QStringLiteral("串口[%1]正在发送剩余数据，请稍候").arg(m_port->settings().name)));
    } else if (m_port->state() != Link::State::Closed) {
        m_closedByUser = true;
        m_port->close();
    } else {
        openPort();
    }
}

void SerialportWidget::openPort()
{
    const QString entry = m_config->portText();
    if (entry.isEmpty()) {
        notify(Notice::error(QStringLiteral("当前系统未检测到任何串口，请重试!!!")));
        return;
    }
    SerialSettings settings = m_config->chosen();
    m_lines->writeTo(&settings);
    if (settings.name.isEmpty()) {
        notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(entry)));
        return;
    }
    if (settings.baudRate <= 0) {
        notify(Notice::error(QStringLiteral("波特率为空或不是正整数，串口未打开！")));
        return;
    }
    m_openedEntry = entry;
    if (!m_port->open(settings, SerialLink::Refusal::KeepsOpen))
        reportFailedOpening(std::exchange(m_openedEntry, QString()));
}

void SerialportWidget::showOpening()
{
    const QString text = QStringLiteral("正在打开%1").arg(m_port->settings().name);
    m_config->setOpening();
    m_state->setState(StateIndicator::Busy, text);
    m_area->showWaiting(text);
}

void SerialportWidget::handleOpened()
{
    const QString name = m_port->settings().name;
    setPortState(true);
    notify(Notice::information(QStringLiteral("串口[%1]打开成功!").arg(name)));
    const QStringList refused = m_port->refusedParameters();
    if (!refused.isEmpty())
        notify(Notice::error(
            QStringLiteral("串口[%1]不支持以下参数：%2").arg(name, refused.join(QStringLiteral("、")))));
    m_config->rememberDefaults();
}

void SerialportWidget::reportFailedOpening(const QString &port)
{
    notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(port)));
    notify(Notice::error(m_port->reason()));
}

void SerialportWidget::setPortState(bool open)
{
    m_config->setOpenState(open);
    if (!open && m_defaultsDue)
        reloadSettings();
    m_lines->showState(open, false);
    m_sendBox->setDeviceOpen(open);
    m_state->setOn(open);
    m_area->showHint(open);
    m_area->showWaiting(QString());
}

// Ended by the device, which is back, or by the user.
void SerialportWidget::handleWaiting(bool isWaiting)
{
    if (isWaiting || m_transfer->isBusy()) // handlePortState() follows, or endTransfer()
        return;
    setPortState(m_port->isOpen());
    if (!m_port->isOpen())
        return;
    const QString name = m_port->settings().name;
    m_config->showPort(name);
    notify(Notice::information(QStringLiteral("串口[%1]已重新连接").arg(name)));
}

void SerialportWidget::showWaiting()
{
    const QString text = QStringLiteral("正在等待%1，自%2")
                             .arg(m_reconnector->portName(),
                                  m_reconnector->waitingSince().toString(QStringLiteral("hh:mm:ss")));
    m_config->setWaiting();
    m_config->showPort(m_reconnector->portName());
    m_sendBox->setDeviceOpen(false, QStringLiteral("正在等待设备重新连接，数据未发送"));
    m_state->setState(StateIndicator::Busy, text);
    m_area->showWaiting(text);
}

// What a transfer does to the port is reported by the transfer, what the
// reconnector does by handleWaiting().
void SerialportWidget::handlePortState(Link::State state)
{
    if (m_transfer->isBusy())
        return;
    const QString openedEntry = state == Link::State::Opening ? QString() : std::exchange(m_openedEntry, {});
    switch (state) {
    case Link::State::Opening:
        if (!m_reconnector->isWaiting())
            showOpening();
        break;
    case Link::State::Open:
        if (!openedEntry.isEmpty())
            handleOpened();
        break;
    case Link::State::Closing: // the last bytes leave first
        m_reader->stop();
        m_sendBox->setDeviceOpen(false);
        m_state->setOn(false);
        m_config->setClosing();
        break;
    case Link::State::Closed:
        m_reader->stop();
        handlePortClosed(openedEntry);
        break;
    }
}

// notOpened: the entry that was chosen, where opening it has failed.
void SerialportWidget::handlePortClosed(const QString &notOpened)
{
    if (m_reconnector->failedAttempts() > 0)
        return; // it is waiting as before
    setPortState(false);
    const QString name = m_port->settings().name;
    if (std::exchange(m_closedByUser, false)) {
        notify(Notice::information(
            (notOpened.isEmpty() ? QStringLiteral("串口[%1]已关闭!!") : QStringLiteral("已取消打开串口[%1]"))
                .arg(name)));
    }
    if (m_reconnector->isWaiting()) {
        showWaiting();
        notify(Notice::information(
            QStringLiteral("串口[%1]已断开，正在等待设备恢复").arg(m_reconnector->portName())));
    } else if (!m_port->reason().isEmpty()) {
        if (notOpened.isEmpty())
            notify(Notice::error(QStringLiteral("当前串口已拔出，请重新打开!")));
        else
            reportFailedOpening(notOpened);
    }
    emit signalClosed();
}

void SerialportWidget::SltSerialportChanged(QStringList serialports)
{
    m_config->setPorts(serialports);
    if (m_reconnector->isWaiting())
        m_config->showPort(m_reconnector->portName());
    if (!m_port->isOpen() || m_transfer->isBusy())
        return;
    if (m_reconnector->isEnabled()) {
        if (SerialPorts::isPresent(m_port->settings().name))
            m_config->showPort(m_port->settings().name);
        else
            m_port->handleHangUp();
        return;
    }
    // The bare name is compared with complete entries: one with a description
    // never matches, so that any change of the list closes the port.
    const QString name = m_port->settings().name;
    if (serialports.contains(name, Qt::CaseSensitive)) {
        m_config->selectEntry(name);
        return;
    }
    m_port->close();
    notify(Notice::error(QStringLiteral("当前串口已拔出，请重新打开!")));
}

// ---- receiving

void SerialportWidget::sltInterruptDetection()
{
    m_reader->handleArrival();
}

void SerialportWidget::SltDelayChanged()
{
    m_reader->setQuietTime(m_recvOptions->quietTime());
    m_port->setMaxReadPause(m_recvOptions->quietTime() / 3);
}

void SerialportWidget::SltRecvFromSerialport()
{
    m_reader->endPacket();
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
    sendBytes(byCmd);
}

qint64 SerialportWidget::sendBytes(const QByteArray &bytes)
{
    if (m_transfer->isBusy())
        return 0;
    if (m_area->showsSent())
        takeArrived(); // what came before stands before
    const qint64 sent = m_port->send(bytes);
    m_sendCount += static_cast<quint32>(sent);
    m_area->refreshCounts();
    if (!m_recvOptions->stopShow())
        m_area->showSent(bytes.left(static_cast<int>(sent)), m_recvOptions->hexShow(),
                         m_recvOptions->logMode());
    return sent;
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

// type: index of the protocol in the send box's list; size: bytes of a packet.
void SerialportWidget::sltSendXYmodemFile(int type, int size, QStringList fileName)
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
    m_transfer->start(type, size, fileName);
}

void SerialportWidget::sltTransmitProgress(int porgress, QString name)
{
    m_transfer->showProgress(porgress, name);
}

void SerialportWidget::sltTransmitStatus(YmodemFileTransmit::Status status, QString name)
{
    m_transfer->handleStatus(status, name);
}

void SerialportWidget::beginTransfer()
{
    m_answers->answers()->setPaused(true);
    m_sendBox->setDeviceOpen(false);
    m_config->setHandedOver();
    m_lines->showState(true, true);
    m_reconnector->setHeld(true);
}

void SerialportWidget::endTransfer()
{
    const bool isOpen = m_port->isOpen();
    m_answers->answers()->setPaused(false);
    m_reconnector->setHeld(false);
    if (m_port->state() == Link::State::Opening && !m_quitting) { // again, which takes its time
        m_openedEntry = m_port->settings().name;
        return showOpening();
    }
    setPortState(isOpen);
    if (std::exchange(m_quitting, false)) {
        m_reconnector->cancel();
        if (isOpen || m_port->state() == Link::State::Opening)
            m_port->close();
        else
            emit signalClosed();
        return;
    }
    if (m_reconnector->isWaiting())
        showWaiting();
    else if (!isOpen)
        reportFailedOpening(m_port->settings().name);
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

// Without waiting for the line to be quiet.
void SerialportWidget::takeArrived()
{
    m_port->readPending();
    SltRecvFromSerialport();
}

bool SerialportWidget::mayClose()
{
    takeArrived();
    if (m_transfer->isBusy() &&
        QtMessageBox::question(this, QStringLiteral("询问"),
                               QStringLiteral("正在传输文件，是否终止传输并退出？")) == 0)
        return false;
    return m_received->mayClose();
}

void SerialportWidget::closeLinks()
{
    m_reconnector->cancel();
    m_quitting = m_transfer->isBusy();
    if (m_quitting)
        m_transfer->stop(); // endTransfer() closes
    else if (m_port->state() != Link::State::Closing)
        m_port->close();
}

bool SerialportWidget::isClosed() const
{
    return m_port->state() == Link::State::Closed && !m_transfer->isBusy();
}

bool SerialportWidget::saveBeforeExit()
{
    takeArrived();
    return m_received->saveBeforeExit() && m_sendBox->saveBeforeExit() && m_area->completeExport();
}

const ByteSpool &SerialportWidget::spool() const
{
    return m_received->spool();
}

// A profile was chosen.
void SerialportWidget::loadFields()
{
    m_memory->load();
    m_sendOptions->load();
    m_config->loadDefaults();
    m_lines->load();
    const QString port = Settings::instance().serialPage.port;
    if (!port.isEmpty() && !m_config->choosePort(port))
        notify(Notice::error(QStringLiteral("方案中的串口[%1]现在不存在").arg(port)));
}

void SerialportWidget::reloadSettings()
{
    m_log->load();
    m_answers->load();
    m_area->reloadView();
    m_memory->load();
    m_sendOptions->load();
    m_sendBox->filePage()->load();
    m_defaultsDue = !isClosed(); // the parameters shown are those of the port
    if (m_defaultsDue)
        return;
    m_config->loadDefaults();
    m_lines->load();
}

void SerialportWidget::reloadCodec()
{
    m_area->reloadCodec();
}

void SerialportWidget::SltBtnFoldClicked()
{
    m_area->fold();
}
