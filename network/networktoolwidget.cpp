#include "network/networktoolwidget.h"

#include "network/clientlistpanel.h"
#include "network/networkconfigpanel.h"
#include "network/readgate.h"
#include "network/tcpserver.h"
#include "serial/qtsendboxwidget.h"
#include "serial/qtterminalwidget.h"
#include "serial/receivestore.h"
#include "serial/recvoptions.h"
#include "serial/sendoptions.h"
#include "shell/base/formpanel.h"
#include "shell/base/placeholdertext.h"
#include "shell/base/qtmessagetip.h"
#include "shell/base/stateindicator.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTcpSocket>
#include <QTime>
#include <QUdpSocket>
#include <QVBoxLayout>

namespace {

constexpr int kError = 255;
constexpr int kCountPeriodMs = 250;

} // namespace

NetworkToolWidget::NetworkToolWidget(QWidget *parent)
    : QtWidgetBase(parent)
    , m_server(new TcpServer(this))
    , m_socket(new QTcpSocket(this))
    , m_udp(new QUdpSocket(this))
    , m_countTimer(this)
{
    setObjectName(QStringLiteral("NetworkToolWidget"));
    m_countTimer.setSingleShot(true);
    buildUi();
    m_gate = new ReadGate([this] { return m_terminal->queuedBytes(); }, this);
    connectParts();
    connectSockets();
    sltChangeNetType(m_config->type());
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
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 8, 8, 8);
    row->setSpacing(8);
    QWidget *work = buildWorkArea(); // makes the send box that the panel's options drive
    row->addWidget(buildPanel());
    row->addWidget(work, 1);
    // The work area was made first, but follows the panel.
    QVector<QWidget *> parts;
    for (QWidget *part = m_fold; work->isAncestorOf(part); part = part->nextInFocusChain())
        if ((part->focusPolicy() & Qt::TabFocus) && !part->focusProxy())
            parts.append(part);
    QWidget *last = m_sendOptions->lastField();
    for (QWidget *part : qAsConst(parts)) {
        setTabOrder(last, part);
        last = part;
    }
}

QWidget *NetworkToolWidget::buildPanel()
{
    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("configPanel"));
    m_config = new NetworkConfigPanel(m_panel);
    m_clients = new ClientListPanel(m_panel);
    m_recvOptions = new RecvOptions(m_panel, RecvOptions::Messages);
    m_sendOptions = new SendOptions(m_sendBox, m_panel);
    for (QWidget *group : {static_cast<QWidget *>(m_config), static_cast<QWidget *>(m_clients),
                           static_cast<QWidget *>(m_recvOptions), static_cast<QWidget *>(m_sendOptions)})
        m_panel->addWidget(group);
    return m_panel;
}

QWidget *NetworkToolWidget::buildWorkArea()
{
    auto *area = new QWidget(this);
    m_fold = new QPushButton(QStringLiteral("隐藏配置界面"), area);
    m_fold->setObjectName(QStringLiteral("btnFold"));
    m_state = new StateIndicator(area);
    m_recvLabel = new QLabel(area);
    m_recvLabel->setObjectName(QStringLiteral("labelRecvCount"));
    m_sendLabel = new QLabel(area);
    m_sendLabel->setObjectName(QStringLiteral("labelSendCount"));
    auto *top = new QHBoxLayout;
    top->setSpacing(8);
    top->addWidget(m_fold);
    top->addStretch();
    top->addWidget(m_sendLabel);
    top->addSpacing(8);
    top->addWidget(m_recvLabel);
    top->addSpacing(8);
    top->addWidget(m_state);

    m_terminal = new QtTerminalWidget(area);
    m_terminal->setPlaceholderText(QStringLiteral("选择协议并打开后，接收到的数据将显示在这里"));
    PlaceholderText::keepFaint(m_terminal);
    m_received = new ReceiveStore(m_terminal, QStringLiteral("network"), this);
    m_sendBox = new QtSendBoxWidget(QtSendBoxWidget::Network, area);

    auto *split = new QSplitter(Qt::Vertical, area);
    split->setObjectName(QStringLiteral("splitRecvSend"));
    split->setChildrenCollapsible(false);
    split->addWidget(m_terminal);
    split->addWidget(m_sendBox);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 0);
    split->setSizes({300, 140});

    auto *column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addLayout(top);
    column->addWidget(split, 1);
    return area;
}

void NetworkToolWidget::connectParts()
{
    connect(m_config, &NetworkConfigPanel::typeChanged, this, &NetworkToolWidget::sltChangeNetType);
    connect(m_config, &NetworkConfigPanel::openClicked, this, &NetworkToolWidget::sltBtnOpenClicked);
    connect(m_clients, &ClientListPanel::disconnectClicked, this, &NetworkToolWidget::sltDisconnectClient);
    connect(m_recvOptions, &RecvOptions::clearClicked, this, &NetworkToolWidget::clearRecv);
    connect(m_recvOptions, &RecvOptions::saveClicked, this, &NetworkToolWidget::sltSaveDataToFile);
    connect(m_sendOptions, &SendOptions::pageChosen, this, &NetworkToolWidget::sltChangeSendPage);
    connect(m_sendOptions, &SendOptions::intervalEdited, this, &NetworkToolWidget::sltChangeAutoInterval);
    connect(m_fold, &QPushButton::clicked, this, &NetworkToolWidget::sltBtnFoldClicked);
    connect(m_sendBox, &QtSendBoxWidget::signalSendData, this, &NetworkToolWidget::sltSendData);
    connect(m_sendBox, &QtSendBoxWidget::showErrorHint, this, &NetworkToolWidget::sltShowErrorHint);
    connect(m_sendBox, &QtSendBoxWidget::signalNotify, this, &NetworkToolWidget::signalNotify);
    connect(m_terminal, &QtTerminalWidget::clearRequested, this, &NetworkToolWidget::clearRecv);
    connect(m_received, &ReceiveStore::notify, this, &NetworkToolWidget::signalNotify);
    connect(m_terminal, &QtTerminalWidget::historyLost, this,
            [this] { emit signalNotify(QStringLiteral("磁盘空间不足，部分早期显示内容已丢失！"), kError); });
    connect(&m_countTimer, &QTimer::timeout, this, &NetworkToolWidget::showCounts);
}

// ---- receiving

// The one way of everything that comes in. A datagram is a message by itself;
// the bytes of a connection are one stream, whose characters may be cut.
void NetworkToolWidget::sltRecvSocketMessage(QString name, QByteArray byData)
{
    m_recvCount += byData.size();
    refreshCounts();
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
    const bool isStream = m_config->type() != NetworkConfigPanel::Udp;
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

// Shows changed counts at once, but not more often than the eye can follow.
void NetworkToolWidget::refreshCounts()
{
    if (m_countTimer.isActive())
        return;
    const qint64 since = m_sinceCounts.isValid() ? m_sinceCounts.elapsed() : kCountPeriodMs;
    if (since >= kCountPeriodMs)
        showCounts();
    else
        m_countTimer.start(static_cast<int>(kCountPeriodMs - since));
}

void NetworkToolWidget::showCounts()
{
    m_countTimer.stop();
    m_sinceCounts.start();
    m_received->flush();
    m_sendLabel->setText(QStringLiteral("发送字节: %1").arg(m_sendCount));
    m_recvLabel->setText(QStringLiteral("接收字节: %1").arg(m_recvCount));
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
    m_sendBox->setCurrentPage(index);
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
    const bool hide = m_panel->isVisibleTo(this);
    m_panel->setVisible(!hide);
    m_fold->setText(hide ? QStringLiteral("显示配置界面") : QStringLiteral("隐藏配置界面"));
}

void NetworkToolWidget::reloadSettings()
{
    m_defaultsDue = isLinkOpen(); // whose parameters are the ones shown
    if (!m_defaultsDue)
        m_config->loadDefaults();
}

bool NetworkToolWidget::prepareToClose()
{
    if (!m_gate->isOpen()) { // what was held back belongs to the record
        m_server->setReading(true);
        m_server->setReading(false);
        takeFromHost();
    }
    return m_received->prepareToClose();
}
