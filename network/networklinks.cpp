// The network page's three links: opening, closing, sending and what their
// sockets report.

#include "clientlistpanel.h"
#include "clientsocket.h"
#include "datagramsocket.h"
#include "networkconfigpanel.h"
#include "networktoolwidget.h"
#include "qtmessagebox.h"
#include "qtterminalwidget.h"
#include "readgate.h"
#include "settings.h"
#include "socketerror.h"
#include "stateindicator.h"
#include "tcpserver.h"
#include "workarea.h"

#include <QDebug>

namespace {

const auto kQuestion = QStringLiteral("询问");
const auto kFromServer = QStringLiteral(" 来自服务端消息 ");

// A connection is held up while so much waits to be shown; datagrams that are
// not read are lost, so that more of them may wait.
constexpr qint64 kMostStreamBacklog = 2LL * 1024 * 1024;
constexpr qint64 kMostDatagramBacklog = 32LL * 1024 * 1024;
constexpr int kLargestDatagram = 65507;

} // namespace

void NetworkToolWidget::connectSockets()
{
    connect(m_server, &TcpServer::signalClientConnected, this, &NetworkToolWidget::sltNewClientConnected);
    connect(m_server, &TcpServer::signalClientDisconnected, this, &NetworkToolWidget::sltClientDisconnected);
    connect(m_server, &TcpServer::signalReadMessage, this, &NetworkToolWidget::sltRecvSocketMessage);
    connect(m_server, &TcpServer::clientBlocked, this, [this](const QString &name, bool blocked) {
        notify({blocked ? QStringLiteral("客户端[%1]长时间未接收数据，已暂停向其发送！").arg(name)
                        : QStringLiteral("客户端[%1]已恢复接收数据。").arg(name),
                blocked ? Notice::Error : Notice::Information});
    });
    connect(m_server, &QTcpServer::acceptError, this, [this](QAbstractSocket::SocketError error) {
        notify(Notice::error(
            QStringLiteral("无法接受新的客户端：%1").arg(socketErrorText(error, m_server->errorString()))));
    });

    const auto countSent = [this](qint64 bytes) {
        m_sendCount += bytes;
        m_area->refreshCounts();
    };
    connect(m_server, &TcpServer::bytesHandedOver, this, countSent);
    connect(m_socket, &QTcpSocket::bytesWritten, this, countSent);
    connect(m_server, &TcpServer::clientUndelivered, this, [this](const QString &name, qint64 bytes) {
        notify(Notice::error(QStringLiteral("客户端[%1]断开时，有%2字节未能发送！").arg(name).arg(bytes)));
    });

    connect(m_socket, &QTcpSocket::connected, this, &NetworkToolWidget::sltConnectedToHost);
    connect(m_socket, &QTcpSocket::disconnected, this, &NetworkToolWidget::sltDisConnectedToHost);
    connect(m_socket, &QTcpSocket::readyRead, this, &NetworkToolWidget::sltReadyFromHost);
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &NetworkToolWidget::sltTcpError);
    connect(m_socket, &ClientSocket::received, this,
            [this](const QByteArray &bytes) { sltRecvSocketMessage(kFromServer, bytes); });
    connect(m_socket, &ClientSocket::failed, this, [this](const QString &why) {
        showFailed(QStringLiteral("连接失败：%1").arg(why));
        notify(Notice::error(QStringLiteral("[TCP Client]连接失败：%1").arg(why)));
    });
    connect(m_udp, &QUdpSocket::readyRead, this, &NetworkToolWidget::sltReadyFromUdp);
    connect(m_udp, &DatagramSocket::received, this, [this](const QString &sender, const QByteArray &bytes) {
        sltRecvSocketMessage(QStringLiteral(" UDP from %1 ").arg(sender), bytes);
    });

    connect(m_gate, &ReadGate::closed, m_server, [this] { m_server->setReading(false); });
    connect(m_gate, &ReadGate::opened, this, [this] {
        m_server->setReading(true);
        sltReadyFromHost();
        sltReadyFromUdp();
    });
}

// ---- opening and closing

void NetworkToolWidget::sltBtnOpenClicked()
{
    switch (m_config->protocol()) {
    case NetworkConfigPanel::TcpServer:
        return toggleServer();
    case NetworkConfigPanel::TcpClient:
        return toggleClient();
    default:
        return toggleUdp();
    }
}

void NetworkToolWidget::sltChangeNetType(int index)
{
    closeLink();
    m_clients->setVisible(index == NetworkConfigPanel::TcpServer);
    m_gate->setMaxBacklog(index == NetworkConfigPanel::Udp ? kMostDatagramBacklog : kMostStreamBacklog);
    showClosed(QString());
}

bool NetworkToolWidget::isLinkOpen() const
{
    return m_server->isListening() || m_socket->isOpen() || m_udp->isListening();
}

// What has already arrived is taken in first. A connection that has bytes queued
// is closed when they are delivered.
void NetworkToolWidget::closeLink()
{
    m_server->closeAll();
    m_clients->chooseAll();
    if (m_socket->isOpen()) {
        m_socket->takeRest();
        m_socket->finish();
    }
    m_udp->takeRest();
    m_udp->abort();
}

bool NetworkToolWidget::hasValidFields()
{
    const QString fault = m_config->checkFields();
    if (!fault.isEmpty())
        showFailed(fault);
    return fault.isEmpty();
}

void NetworkToolWidget::toggleServer()
{
    if (m_server->isListening()) {
        const quint16 port = m_server->serverPort();
        closeLink();
        showClosed(QString());
        notify(Notice::information(QStringLiteral("TCP服务监听[端口:%1]已关闭!!").arg(port)));
        return;
    }
    const QString port = m_config->portText();
    const bool valid = hasValidFields();
    if (valid && m_server->listen(m_config->localAddress(), m_config->port())) {
        showOpened(QString());
        saveSettings();
        notify(Notice::information(QStringLiteral("TCP服务监听[端口:%1]已启动!!").arg(port)));
        return;
    }
    if (valid)
        showFailed(socketErrorText(m_server->serverError(), m_server->errorString()));
    notify(Notice::error(QStringLiteral("TCP服务监听[端口:%1]失败，请确认该端口是否可用!!").arg(port)));
}

void NetworkToolWidget::toggleUdp()
{
    if (m_udp->isListening()) {
        closeLink();
        showClosed(QString());
        return;
    }
    const QString port = m_config->portText();
    const bool valid = hasValidFields();
    if (valid && m_udp->listen(m_config->localAddress(), m_config->port())) {
        showOpened(QStringLiteral("正在接收端口%1的数据").arg(port));
        saveSettings();
        notify(Notice::information(QStringLiteral("UDP服务监听[端口:%1]已启动!!").arg(port)));
        return;
    }
    if (valid)
        showFailed(socketErrorText(m_udp->error(), m_udp->errorString()));
    m_udp->abort();
    notify(Notice::error(QStringLiteral("UDP服务监听[端口:%1]失败，请确认该端口是否可用!!").arg(port)));
}

void NetworkToolWidget::toggleClient()
{
    if (m_socket->isOpen() && m_socket->isFinishing())
        return m_socket->drop(); // the user does not wait for the rest
    if (m_socket->isOpen()) {
        closeLink();
        if (m_socket->isFinishing())
            return showFinishing();
        showClosed(QString());
        notify(Notice::information(QStringLiteral("[ TCP Client ] 已断开连接！")));
        return;
    }
    if (!hasValidFields())
        return;
    notify(Notice::information(QStringLiteral("正在与服务器建立连接....")));
    const QString connecting = QStringLiteral("正在连接，再次单击可取消");
    m_state->setState(StateIndicator::Busy, connecting);
    m_config->showState(connecting, false);
    m_socket->connectToHost(m_config->serverAddress(), m_config->port(), QIODevice::ReadWrite,
                            QAbstractSocket::AnyIPProtocol);
}

void NetworkToolWidget::showOpened(const QString &state)
{
    m_notSentTold.clear();
    m_config->setOpenState(true);
    m_config->showState(state, false);
    m_sendBox->setDeviceOpen(true);
    m_state->setOn(true);
    m_area->showHint(true);
    showCounts();
}

void NetworkToolWidget::showClosed(const QString &state)
{
    m_config->setOpenState(false);
    m_config->showState(state, false);
    m_sendBox->setDeviceOpen(false);
    m_state->setOn(false);
    m_area->showHint(false);
    if (m_defaultsDue) {
        m_defaultsDue = false;
        m_config->loadDefaults();
    }
}

void NetworkToolWidget::showFinishing()
{
    const auto text = QStringLiteral("正在发送剩余数据，再次单击可放弃");
    m_config->showState(text, false);
    m_sendBox->setDeviceOpen(false);
    m_state->setState(StateIndicator::Busy, text);
}

void NetworkToolWidget::showFailed(const QString &why)
{
    showClosed(QString());
    m_config->showState(why, true);
    m_state->setState(StateIndicator::Failed, QStringLiteral("上次错误：%1").arg(why));
}

void NetworkToolWidget::saveSettings()
{
    const QHostAddress local = m_config->localAddress();
    const bool isClient = m_config->protocol() == NetworkConfigPanel::TcpClient;
    const QString address = isClient                     ? m_config->serverAddress()
                            : local == QHostAddress::Any ? QStringLiteral("0.0.0.0")
                                                         : local.toString();
    Settings::NetworkDefaults &defaults = Settings::instance().network;
    defaults.type.set(m_config->protocol());
    defaults.address.set(address);
    defaults.port.set(m_config->port());
}

// ---- the server's clients

void NetworkToolWidget::sltNewClientConnected(QString name)
{
    m_notSentTold.clear();
    m_clients->add(name);
    notify(Notice::information(QStringLiteral("新客户端[%1]已连接:").arg(name)));
    m_area->refreshCounts();
}

void NetworkToolWidget::sltClientDisconnected(QString name)
{
    m_terminal->endSource(name);
    const bool wasChosen = m_clients->remove(name);
    notify(Notice::information(QStringLiteral("客户端[%1]已断开连接:").arg(name)));
    m_area->refreshCounts();
    if (isClosed())
        emit signalClosed();
    if (!wasChosen || !m_server->isListening())
        return;
    m_sendBox->stopAutoSend();
    notify(Notice::error(QStringLiteral("发送对象[%1]已断开连接，请重新选择客户端！").arg(name)));
}

void NetworkToolWidget::sltDisconnectClient()
{
    if (m_clients->count() < 2)
        return;
    // By name: while the question is open, others may come and go.
    const bool all = m_clients->allChosen();
    const QString name = m_clients->chosen();
    if (!all && name.isEmpty()) {
        notify(Notice::information(QStringLiteral("请先选择需要断开的客户端！")));
        return;
    }
    const quint64 connection = m_server->connectionOf(name);
    const QString text =
        all ? QStringLiteral("是否确认断开所有连接?") : QStringLiteral("是否确认断开当前客户端?");
    if (QtMessageBox::question(this, kQuestion, text) == 1 &&
        m_server->connectionOf(name) == connection) // a newcomer may have got the name
        m_server->closeClient(name);
}

// ---- the client's socket

void NetworkToolWidget::sltConnectedToHost()
{
    showOpened(QStringLiteral("已连接到%1").arg(m_socket->peerText()));
    saveSettings();
    notify(Notice::information(QStringLiteral("[TCP Client]与服务器连接成功！！！")));
}

void NetworkToolWidget::sltDisConnectedToHost()
{
    QString error;
    const bool finished = m_socket->isFinishing();
    const bool byServer = m_socket->takeEnd(&error);
    m_terminal->endSource(kFromServer);
    if (!error.isEmpty())
        showFailed(error);
    else
        showClosed(byServer ? QStringLiteral("服务器已断开连接") : QString());
    notify(Notice::information(QStringLiteral("[TCP Client]与服务器已断开连接~~~")));
    if (finished)
        notify(Notice::information(QStringLiteral("[ TCP Client ] 已断开连接！")));
    if (m_socket->undelivered() > 0)
        notify(Notice::error(QStringLiteral("断开时，有%1字节未能发送！").arg(m_socket->undelivered())));
    if (isClosed())
        emit signalClosed();
}

void NetworkToolWidget::sltReadyFromHost()
{
    if (m_gate->isOpen())
        m_socket->takeAll();
}

void NetworkToolWidget::sltTcpError(QAbstractSocket::SocketError error)
{
    qDebug() << m_socket->errorString() << "Socket error" << error;
}

// ---- datagrams

void NetworkToolWidget::sltReadyFromUdp()
{
    m_udp->takeAll(*m_gate);
}

// ---- sending

void NetworkToolWidget::sltSendData(QByteArray byData)
{
    qint64 sent = 0;
    if (m_server->isListening())
        sent = sendToClients(byData);
    else if (m_socket->state() == QAbstractSocket::ConnectedState)
        sent = sendToHost(byData);
    else if (m_udp->isListening())
        sent = sendDatagram(byData);
    if (sent > 0)
        m_notSentTold.clear();
}

void NetworkToolWidget::tellNotSent(const QString &text)
{
    if (text != m_notSentTold || !m_sendBox->isAutoSending())
        notify(Notice::error(text));
    m_notSentTold = text;
}

qint64 NetworkToolWidget::sendToClients(const QByteArray &bytes)
{
    const QString name = m_clients->chosen();
    if (!m_clients->allChosen() && name.isEmpty()) {
        tellNotSent(QStringLiteral("未选择客户端，数据未发送！"));
        return 0;
    }
    if (m_server->clientCount() == 0) {
        tellNotSent(QStringLiteral("没有已连接的客户端，数据未发送！"));
        return 0;
    }
    const qint64 sent =
        name.isEmpty() ? m_server->SltSendMsgToAllClient(bytes) : m_server->SltSendMsgToClient(name, bytes);
    if (sent == 0)
        tellNotSent(QStringLiteral("客户端长时间未接收数据，本次数据未发送！"));
    return sent;
}

qint64 NetworkToolWidget::sendToHost(const QByteArray &bytes)
{
    const qint64 sent = m_socket->send(bytes);
    if (sent < 0)
        tellNotSent(QStringLiteral("服务器长时间未接收数据，本次数据未发送！"));
    return sent;
}

qint64 NetworkToolWidget::sendDatagram(const QByteArray &bytes)
{
    const QHostAddress address = m_config->destinationAddress();
    const quint16 port = m_config->destinationPort();
    if (address.isNull() || address == QHostAddress::AnyIPv4 || address == QHostAddress::AnyIPv6) {
        tellNotSent(QStringLiteral("UDP目的地址配置错误！"));
    } else if (port == 0) {
        tellNotSent(QStringLiteral("UDP目的端口配置错误！"));
    } else if (bytes.size() > kLargestDatagram) {
        tellNotSent(QStringLiteral("数据超过%1字节，无法作为一个UDP数据报发送！").arg(kLargestDatagram));
    } else {
        const qint64 sent = m_udp->writeDatagram(bytes, address, port);
        if (sent < 0)
            tellNotSent(QStringLiteral("数据发送失败：%1")
                            .arg(socketErrorText(m_udp->error(), m_udp->errorString())));
        m_sendCount += qMax<qint64>(0, sent);
        m_area->refreshCounts();
        return sent;
    }
    return 0;
}
