#include "networktoolwidget.h"

#include "clientlistpanel.h"
#include "clientsocket.h"
#include "datagramsocket.h"
#include "formpanel.h"
#include "networkconfigpanel.h"
#include "qtmessagetip.h"
#include "qtterminalwidget.h"
#include "readgate.h"
#include "receivestore.h"
#include "recvoptions.h"
#include "sendoptions.h"
#include "stateindicator.h"
#include "tcpserver.h"
#include "workarea.h"

#include <QPushButton>
#include <QTime>

NetworkToolWidget::NetworkToolWidget(QWidget *parent)
    : QtWidgetBase(parent)
    , m_server(new TcpServer(this))
    , m_socket(new ClientSocket(this))
    , m_udp(new DatagramSocket(this))
{
    setObjectName(QStringLiteral("NetworkToolWidget"));
    buildUi();
    m_gate = new ReadGate([this] { return m_terminal->queuedBytes(); }, this);
    connectParts();
    connectSockets();
    sltChangeNetType(m_config->protocol());
    showCounts();
}

NetworkToolWidget::~NetworkToolWidget()
{
    blockSignals(true);
    // They outlive this part of the page, and talk when they end.
    m_server->disconnect(this);
    m_socket->disconnect(this);
    m_udp->disconnect(this);
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
    for (QWidget *group : {static_cast<QWidget *>(m_config), static_cast<QWidget *>(m_clients),
                           static_cast<QWidget *>(m_recvOptions), static_cast<QWidget *>(m_sendOptions)})
        m_panel->addWidget(group);
    m_area->placeBeside(m_panel, m_sendOptions->lastField());
    setPageKeys(m_config->openButton(), m_area->foldButton());
}

void NetworkToolWidget::connectParts()
{
    connect(m_config, &NetworkConfigPanel::protocolChanged, this, &NetworkToolWidget::sltChangeNetType);
    connect(m_config, &NetworkConfigPanel::openClicked, this, &NetworkToolWidget::sltBtnOpenClicked);
    connect(m_clients, &ClientListPanel::disconnectClicked, this, &NetworkToolWidget::sltDisconnectClient);
    connect(m_recvOptions, &RecvOptions::clearClicked, this, &NetworkToolWidget::clearRecv);
    connect(m_recvOptions, &RecvOptions::saveClicked, this, &NetworkToolWidget::sltSaveDataToFile);
    connect(m_sendOptions, &SendOptions::pageChosen, this, &NetworkToolWidget::sltChangeSendPage);
    connect(m_sendOptions, &SendOptions::intervalEdited, this, &NetworkToolWidget::sltChangeAutoInterval);
    connect(m_area->foldButton(), &QPushButton::clicked, this, &NetworkToolWidget::sltBtnFoldClicked);
    connect(m_sendBox, &QtSendBoxWidget::signalSendData, this, &NetworkToolWidget::sltSendData);
    connect(m_sendBox, &QtSendBoxWidget::showErrorHint, this, &NetworkToolWidget::sltShowErrorHint);
    connect(m_area, &WorkArea::notify, this, &NetworkToolWidget::notify);
    connect(m_area, &WorkArea::clearRequested, this, &NetworkToolWidget::clearRecv);
    connect(m_area, &WorkArea::countsDue, this, &NetworkToolWidget::showCounts);
}

// ---- receiving

// The one way of everything that comes in. A datagram is a message by itself;
// the bytes of a connection are one stream, whose characters may be cut.
void NetworkToolWidget::sltRecvSocketMessage(QString name, QByteArray byData)
{
    m_recvCount += byData.size();
    m_area->refreshCounts();
    m_received->add(byData);
    m_gate->taken(byData.size());
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
    if (m_server->isListening())
        m_config->showState(QStringLiteral("正在监听端口%1，已连接%2个客户端")
                                .arg(m_server->serverPort())
                                .arg(m_server->clientCount()),
                            false);
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
    m_defaultsDue = isLinkOpen(); // whose parameters are the ones shown
    if (!m_defaultsDue)
        m_config->loadDefaults();
}

bool NetworkToolWidget::mayClose()
{
    takeThrottled();
    return m_received->mayClose();
}

void NetworkToolWidget::closeLinks()
{
    takeThrottled();
    closeLink();
    if (m_socket->isFinishing())
        showFinishing();
    else
        showClosed(QString());
}

bool NetworkToolWidget::isClosed() const
{
    return !m_socket->isOpen() && !m_server->isFinishing();
}

bool NetworkToolWidget::saveBeforeExit()
{
    takeThrottled();
    return m_received->saveBeforeExit() && m_sendBox->saveBeforeExit();
}

// What is not read while the gate is closed belongs to the record, too.
void NetworkToolWidget::takeThrottled()
{
    if (m_gate->isOpen())
        return;
    m_server->setReading(true);
    m_server->setReading(false);
    m_socket->takeAll();
}
