#include "networktoolwidget.h"

#include "answerpanel.h"
#include "clientlistpanel.h"
#include "commandpage.h"
#include "fieldmemory.h"
#include "formpanel.h"
#include "launchoptions.h"
#include "linksession.h"
#include "logpanel.h"
#include "multicastgroup.h"
#include "networkconfigpanel.h"
#include "networkpeers.h"
#include "profilebutton.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtterminalwidget.h"
#include "receivestore.h"
#include "recvoptions.h"
#include "sendoptions.h"
#include "stateindicator.h"
#include "tcpserverlink.h"
#include "workarea.h"

#include <QDebug>
#include <QPushButton>
#include <QTime>

namespace {
const auto kFromServer = QStringLiteral(" 来自服务端消息 ");
}

NetworkToolWidget::NetworkToolWidget(QWidget *parent)
    : QtWidgetBase(parent)
{
    setObjectName(QStringLiteral("NetworkToolWidget"));
    buildUi();
    m_session = new LinkSession(
        m_config, m_state, QStringLiteral("网络调试助手"),
        [this] { return m_terminal->queuedBytes() + m_answers->answers()->queuedBytes(); }, this);
    m_peers = new NetworkPeers(m_session, m_config, m_clients, this);
    connect(m_peers, &NetworkPeers::notify, this, &NetworkToolWidget::notify);
    connectParts();
    m_memory = new FieldMemory(this);
    m_config->remember(m_memory);
    m_multicast->remember(m_memory);
    m_session->setReconnects(m_config->reconnects());
    m_recvOptions->remember(m_memory, &Settings::instance().networkArea);
    m_sendOptions->remember(m_memory, &Settings::instance().networkArea, &Settings::instance().networkSend);
    m_area->remember(&Settings::instance().networkArea);
    connectSession();
    connectAnswers();
    sltChangeNetType(m_config->protocol());
    showCounts();
}

NetworkToolWidget::~NetworkToolWidget()
{
    blockSignals(true);
    m_session->disconnect(this); // it outlives this part of the page
}

// ---- building

void NetworkToolWidget::buildUi()
{
    m_area = new WorkArea(QtSendBoxWidget::Network, QStringLiteral("network"),
                          QStringLiteral("选择协议并打开后，接收到的数据将显示在这里"),
                          QStringLiteral("已打开，正在等待数据"), this);
    m_terminal = m_area->terminal();
    m_received = m_area->received();
    m_sendBox = m_area->sendBox();
    m_state = m_area->state();

    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("configPanel"));
    m_config = new NetworkConfigPanel(m_panel);
    m_clients = new ClientListPanel(m_panel);
    m_recvOptions = new RecvOptions(m_panel, RecvOptions::Messages);
    m_sendOptions = new SendOptions(m_sendBox, m_panel);
    m_log = new LogPanel(&Settings::instance().networkLog, m_area);
    m_area->addTool(m_log->button());
    m_area->addBar(m_log);
    m_answers =
        new AnswerPanel(&Settings::instance().networkAnswers, QStringLiteral("net_answers.json"), m_area);
    m_area->addCommand(m_answers->action());
    m_area->addBar(m_answers);
    m_multicast = new MulticastGroup(m_panel);
    for (QWidget *group : {static_cast<QWidget *>(m_config), static_cast<QWidget *>(m_clients),
                           static_cast<QWidget *>(m_recvOptions), static_cast<QWidget *>(m_sendOptions),
                           static_cast<QWidget *>(m_multicast)})
        m_panel->addWidget(group);
    m_config->setMulticastGroup(m_multicast);
    m_profiles = new ProfileButton(
        QStringLiteral("network"),
        {{QStringLiteral("NetworkPage"), QStringLiteral("NetworkSend")}, {QStringLiteral("NetTools")}},
        m_area);
    m_area->addTool(m_profiles);
    m_area->placeBeside(m_panel, m_multicast->lastField());
    setPageKeys(m_config->openButton(), m_area->foldButton());
}

void NetworkToolWidget::connectParts()
{
    m_profiles->setRefusal([this] {
        return isClosed() && m_session->waitingSince().isNull() ? QString() : QStringLiteral("请先断开连接");
    });
    connect(m_profiles, &ProfileButton::chosen, this, &NetworkToolWidget::reloadSettings);
    connect(m_profiles, &ProfileButton::notify, this, &NetworkToolWidget::notify);
    connect(m_config, &NetworkConfigPanel::protocolChanged, this, &NetworkToolWidget::sltChangeNetType);
    connect(m_config, &NetworkConfigPanel::openClicked, this, &NetworkToolWidget::sltBtnOpenClicked);
    connect(m_config, &NetworkConfigPanel::reconnectChanged, m_session, &LinkSession::setReconnects);
    connect(m_clients, &ClientListPanel::disconnectClicked, this, &NetworkToolWidget::sltDisconnectClient);
    connect(m_recvOptions, &RecvOptions::clearClicked, this, &NetworkToolWidget::clearRecv);
    connect(m_recvOptions, &RecvOptions::stopShowChanged, m_area, &WorkArea::showStopped);
    connect(m_area, &WorkArea::resumeRequested, m_recvOptions, &RecvOptions::resumeShow);
    connect(m_recvOptions, &RecvOptions::saveClicked, this, &NetworkToolWidget::sltSaveDataToFile);
    connect(m_sendOptions, &SendOptions::pageChosen, this, &NetworkToolWidget::sltChangeSendPage);
    connect(m_sendOptions, &SendOptions::intervalEdited, this, &NetworkToolWidget::sltChangeAutoInterval);
    connect(m_area->foldButton(), &QPushButton::clicked, this, &NetworkToolWidget::sltBtnFoldClicked);
    connect(m_sendBox, &QtSendBoxWidget::signalSendData, this, &NetworkToolWidget::sltSendData);
    m_sendBox->commandPage()->runner()->setDevice(
        [this](const QByteArray &bytes, QString *reason) {
            const bool isSent = transmit(bytes, reason);
            if (!isSent && reason->isEmpty())
                *reason = QStringLiteral("没有对端接收");
            return isSent;
        },
        [this] { return m_session->link()->pendingBytes(); });
    connect(m_sendBox, &QtSendBoxWidget::showErrorHint, this, &NetworkToolWidget::sltShowErrorHint);
    connect(m_area, &WorkArea::codecWanted, this, &NetworkToolWidget::signalCodecWanted);
    connect(m_area, &WorkArea::notify, this, &NetworkToolWidget::notify);
    connect(m_area, &WorkArea::clearRequested, this, &NetworkToolWidget::clearRecv);
    connect(m_area, &WorkArea::countsDue, this, &NetworkToolWidget::showCounts);
}

// The slots that are named after sockets do the page's part of what the session
// reports.
void NetworkToolWidget::connectSession()
{
    const QVector<Link *> links = m_session->links();
    for (Link *link : links)
        connect(link, &Link::received, m_sendBox->commandPage()->runner(), &CommandRunner::receive);
    for (Link *link : links)
        m_log->log()->watch(link, [this] { return m_session->stateText(); });
    connect(m_log, &LogPanel::notify, this, &NetworkToolWidget::notify);
    connect(m_log, &LogPanel::stateChanged, this, &NetworkToolWidget::signalLogState);
    connect(m_session, &LinkSession::notify, this, &NetworkToolWidget::notify);
    connect(m_session, &LinkSession::joined, this, &NetworkToolWidget::sltNewClientConnected);
    connect(m_session, &LinkSession::left, this, [this](const QString &name) {
        if (m_config->protocol() == NetworkConfigPanel::TcpServer)
            sltClientDisconnected(name);
        else
            m_terminal->endSource(kFromServer);
    });
    connect(m_session, &LinkSession::received, this, [this](const QString &sender, const QByteArray &bytes) {
        const int protocol = m_config->protocol();
        sltRecvSocketMessage(protocol == NetworkConfigPanel::TcpServer ? sender
                             : protocol == NetworkConfigPanel::TcpClient
                                 ? kFromServer
                                 : QStringLiteral(" UDP from %1 ").arg(sender),
                             bytes);
    });
    connect(m_session, &LinkSession::handedOver, this, [this](qint64 bytes) {
        m_sendCount += bytes;
        m_area->refreshCounts();
    });
    connect(m_session, &LinkSession::opening, this,
            [this] { notify(Notice::information(QStringLiteral("正在与服务器建立连接...."))); });
    connect(m_session, &LinkSession::opened, this, &NetworkToolWidget::sltConnectedToHost);
    connect(m_session, &LinkSession::closing, this, [this] { m_sendBox->setDeviceOpen(false); });
    connect(m_session, &LinkSession::closed, this, &NetworkToolWidget::sltDisConnectedToHost);
    connect(m_session, &LinkSession::closedHere, this, [this](const QString &port) {
        if (m_config->protocol() == NetworkConfigPanel::TcpServer)
            notify(Notice::information(QStringLiteral("TCP服务监听[端口:%1]已关闭!!").arg(port)));
        else if (m_config->protocol() == NetworkConfigPanel::TcpClient)
            notify(Notice::information(QStringLiteral("[ TCP Client ] 已断开连接！")));
    });
    connect(m_session, &LinkSession::socketError, this, &NetworkToolWidget::sltTcpError);
}

void NetworkToolWidget::connectAnswers()
{
    const QVector<Link *> links = m_session->links();
    for (Link *link : links)
        m_answers->answers()->watch(link,
                                    link == links.at(NetworkConfigPanel::Udp)
                                        ? LinkAnswers::Delivery::Datagrams
                                        : LinkAnswers::Delivery::Stream,
                                    [this, link](const QByteArray &bytes, const Peer &to) {
                                        if (m_session->answer(link, bytes, to) <= 0)
                                            return false;
                                        showSent(bytes);
                                        return true;
                                    });
    connect(m_answers, &AnswerPanel::notify, this, &NetworkToolWidget::notify);
    connect(m_answers, &AnswerPanel::stateChanged, this, &NetworkToolWidget::signalAnswerState);
}

void NetworkToolWidget::launch(const LaunchOptions &options)
{
    QString reason;
    if (!options.profile.isEmpty() && !m_profiles->choose(options.profile, &reason))
        notify(Notice::error(QStringLiteral("方案[%1]未选用：%2").arg(options.profile, reason)));
    if (!options.logFile.isEmpty())
        m_log->record(options.logFile);
    if (options.opens && isClosed())
        m_session->toggle();
}

// ---- the link

void NetworkToolWidget::sltBtnOpenClicked()
{
    m_session->toggle();
}

void NetworkToolWidget::sltChangeNetType(int index)
{
    m_session->changeProtocol();
    m_clients->setVisible(index == NetworkConfigPanel::TcpServer);
    showLinkOpen(false);
}

void NetworkToolWidget::sltConnectedToHost()
{
    m_notSentReason.clear();
    m_config->saveDefaults();
    showLinkOpen(true);
}

void NetworkToolWidget::sltDisConnectedToHost()
{
    m_clients->chooseAll();
    showLinkOpen(false);
    if (m_defaultsDue) {
        m_defaultsDue = false;
        m_config->loadDefaults();
    }
    if (isClosed())
        emit signalClosed();
}

void NetworkToolWidget::showLinkOpen(bool open)
{
    const QDateTime since = m_session->waitingSince();
    m_sendBox->setDeviceOpen(open,
                             since.isNull() ? QString() : QStringLiteral("正在等待重新连接，数据未发送"));
    m_area->showWaiting(
        since.isNull()
            ? QString()
            : QStringLiteral("正在等待服务器，自%1").arg(since.toString(QStringLiteral("hh:mm:ss"))));
    m_area->showHint(open);
    m_multicast->setLinkOpen(open);
    showCounts();
}

void NetworkToolWidget::sltReadyFromHost()
{
    m_session->readPending();
}

void NetworkToolWidget::sltReadyFromUdp()
{
    m_session->readPending();
}

void NetworkToolWidget::sltTcpError(QAbstractSocket::SocketError error)
{
    qDebug() << m_session->socketErrorString() << "Socket error" << error;
}

// ---- the server's clients

void NetworkToolWidget::sltNewClientConnected(QString name)
{
    m_notSentReason.clear();
    m_clients->add(name);
    m_session->notifyJoined(name);
}

void NetworkToolWidget::sltClientDisconnected(QString name)
{
    m_terminal->endSource(name);
    const bool wasChosen = m_clients->remove(name);
    m_session->notifyLeft(name);
    if (!wasChosen || !m_session->isOpen())
        return;
    m_sendBox->stopAutoSend();
    notify(Notice::error(QStringLiteral("发送对象[%1]已断开连接，请重新选择客户端！").arg(name)));
}

void NetworkToolWidget::sltDisconnectClient()
{
    if (m_clients->count() < 2)
        return;
    const bool all = m_clients->allChosen();
    // Not by name: while the question is open, a newcomer may get the name.
    const quint64 peer = all ? Link::allPeers : m_session->server()->peerNamed(m_clients->chosen());
    if (!all && peer == Link::allPeers) { // none is chosen
        notify(Notice::information(QStringLiteral("请先选择需要断开的客户端！")));
        return;
    }
    const QString text =
        all ? QStringLiteral("是否确认断开所有连接?") : QStringLiteral("是否确认断开当前客户端?");
    if (QtMessageBox::question(this, QStringLiteral("询问"), text) == 1)
        m_session->link()->closePeer(peer);
}

// ---- sending

void NetworkToolWidget::sltSendData(QByteArray byData)
{
    QString reason;
    if (!transmit(byData, &reason) && !reason.isEmpty())
        notifyNotSent(reason);
}

bool NetworkToolWidget::transmit(const QByteArray &byData, QString *reason)
{
    quint64 peer = Link::allPeers;
    if (m_session->isOpen() && m_config->protocol() == NetworkConfigPanel::TcpServer &&
        !m_clients->allChosen()) {
        peer = m_session->server()->peerNamed(m_clients->chosen());
        if (peer == Link::allPeers)
            *reason = QStringLiteral("未选择客户端，数据未发送！");
    }
    if (!reason->isEmpty() || m_session->send(byData, peer) <= 0) {
        if (reason->isEmpty())
            *reason = m_session->link()->refusal();
        return false;
    }
    m_notSentReason.clear();
    showSent(byData);
    return true;
}

void NetworkToolWidget::showSent(const QByteArray &bytes)
{
    if (!m_recvOptions->stopShow())
        m_area->showSent(bytes, m_recvOptions->hexShow(), false);
}

void NetworkToolWidget::notifyNotSent(const QString &text)
{
    if (text != m_notSentReason || !m_sendBox->isAutoSending())
        notify(Notice::error(text));
    m_notSentReason = text;
}

// ---- receiving

// The one path of all received bytes. A datagram is a complete message;
// the bytes of a connection are one stream, whose characters may be cut.
void NetworkToolWidget::sltRecvSocketMessage(QString name, QByteArray byData)
{
    m_recvCount += byData.size();
    m_area->refreshCounts();
    m_received->add(byData);
    if (m_recvOptions->stopShow()) {
        m_received->setHidden();
        return;
    }
    const bool hex = m_recvOptions->hexShow();
    QString header;
    if (m_recvOptions->timeStamp())
        header = QTime::currentTime().toString(QStringLiteral("[hh:mm:ss.zzz] "));
    if (!hex || !header.isEmpty())
        header += QStringLiteral("[Tcp client %1] ").arg(name);
    if (!hex && byData.endsWith("\r\n"))
        byData.chop(2); // the next message begins a line anyway
    const bool isStream = m_config->protocol() != NetworkConfigPanel::Udp;
    m_terminal->showMessage(byData, header, hex, isStream ? name : QString());
}

void NetworkToolWidget::clearRecv()
{
    m_received->clear();
}

void NetworkToolWidget::sltSaveDataToFile()
{
    m_received->save();
}

const ByteSpool &NetworkToolWidget::spool() const
{
    return m_received->spool();
}

// ---- counts

QStringList NetworkToolWidget::counts() const
{
    return {QString::number(m_sendCount), QString::number(m_recvCount)};
}

void NetworkToolWidget::clearCounts()
{
    m_sendCount = 0;
    m_recvCount = 0;
    showCounts();
}

void NetworkToolWidget::showCounts()
{
    m_area->showCounts(m_sendCount, m_recvCount);
    emit signalRefresCounts(pageIndex);
}

// ---- what else the panel asks for

void NetworkToolWidget::sltChangeSendPage(int index)
{
    m_area->showSendPage(index);
}

void NetworkToolWidget::sltChangeAutoInterval()
{
    m_sendOptions->applyInterval();
}

void NetworkToolWidget::sltShowErrorHint()
{
    QtMessageTip::showTip(QStringLiteral("当前在十六进制输入模式下，只能输入十六进制的字符。"));
}

void NetworkToolWidget::sltBtnFoldClicked()
{
    m_area->fold();
}

void NetworkToolWidget::reloadSettings()
{
    m_log->load();
    m_answers->load();
    m_area->reloadView();
    m_memory->load();
    m_sendOptions->load();
    m_multicast->load();
    // The parameters shown are those of the link, or of the server waited for.
    m_defaultsDue = !m_session->isClosed() || !m_session->waitingSince().isNull();
    if (!m_defaultsDue)
        m_config->loadDefaults();
}

void NetworkToolWidget::reloadCodec()
{
    m_area->reloadCodec();
}

// What reading has left with the sockets belongs to the record, too.
bool NetworkToolWidget::mayClose()
{
    m_session->readPending();
    return m_received->mayClose();
}

void NetworkToolWidget::closeLinks()
{
    m_session->close();
}

bool NetworkToolWidget::isClosed() const
{
    return m_session->isClosed();
}

bool NetworkToolWidget::saveBeforeExit()
{
    m_session->readPending();
    return m_received->saveBeforeExit() && m_sendBox->saveBeforeExit() && m_area->completeExport();
}
