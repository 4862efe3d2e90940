// The camera page's four links: opening, closing, sending and what they report.

#include "cameradebugwidget.h"
#include "cameralinkpanel.h"
#include "camerastatusrow.h"
#include "clientsocket.h"
#include "datagramsocket.h"
#include "imageformatconfig.h"
#include "imageviewer.h"
#include "portname.h"
#include "qtserialport.h"
#include "readgate.h"
#include "socketerror.h"
#include "stateindicator.h"
#include "tcpserver.h"

#include <QDebug>

#include <utility>

namespace {

// A line hands over a few bytes at a time, and what tells packets apart is how
// bytes come: an announcement that is cut is not waited for. So they are gathered
// until the line pauses, but not for longer than anybody would notice.
constexpr int kSerialPauseMs = 3;
constexpr int kMostGathered = 256;

const auto kClosedHint = QStringLiteral("选择协议并打开后，收到的图像将显示在这里");
const auto kFromServer = QStringLiteral("server");
const auto kFromSerial = QStringLiteral("serial");

} // namespace

void CameraDebugWidget::connectLinks()
{
    connect(m_link, &CameraLinkPanel::openClicked, this, &CameraDebugWidget::SltOpenLink);
    connect(m_link, &CameraLinkPanel::protocolChanged, this, &CameraDebugWidget::SltChangeProtocol);

    connect(m_server, &TcpServer::signalReadMessage, this, &CameraDebugWidget::SltRecvImageData);
    connect(m_server, &TcpServer::signalClientConnected, this, [this](const QString &name) {
        notify(Notice::information(QStringLiteral("新客户端[%1]已连接:").arg(name)));
        showPeers();
    });
    connect(m_server, &TcpServer::signalClientDisconnected, this, [this](const QString &name) {
        m_streams.end(name);
        notify(Notice::information(QStringLiteral("客户端[%1]已断开连接:").arg(name)));
        showPeers();
    });

    connect(m_socket, &QTcpSocket::connected, this, &CameraDebugWidget::clientConnected);
    connect(m_socket, &QTcpSocket::disconnected, this, &CameraDebugWidget::clientDisconnected);
    connect(m_socket, &QTcpSocket::readyRead, this, &CameraDebugWidget::SltReadFromTcpSocket);
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &CameraDebugWidget::SltTcpError);
    connect(m_socket, &ClientSocket::received, this,
            [this](const QByteArray &bytes) { SltRecvImageData(kFromServer, bytes); });
    connect(m_socket, &ClientSocket::failed, this, &CameraDebugWidget::clientFailed);
    connect(m_udp, &QUdpSocket::readyRead, this, &CameraDebugWidget::SltReadyFromUdp);
    connect(m_udp, &DatagramSocket::received, this, &CameraDebugWidget::SltRecvImageData);
    connect(m_serial, &QtSerialPort::bytesRead, this, &CameraDebugWidget::gatherSerial);
    m_serialPause.setSingleShot(true);
    m_serialPause.setTimerType(Qt::PreciseTimer);
    connect(&m_serialPause, &QTimer::timeout, this, &CameraDebugWidget::passSerialOn);
    // Queued: the report comes from within the port's own reading.
    connect(m_serial, &QtSerialPort::hungUp, this, &CameraDebugWidget::serialVanished, Qt::QueuedConnection);
    connect(m_serial, &QtSerialPort::failed, this,
            [this](const QString &reason) { notify(Notice::error(reason)); });

    connect(m_gate, &ReadGate::closed, m_server, [this] { m_server->setReading(false); });
    connect(m_gate, &ReadGate::opened, this, [this] {
        m_server->setReading(true);
        SltReadFromTcpSocket();
        SltReadyFromUdp();
    });
}

// ---- opening and closing

bool CameraDebugWidget::isLinkOpen() const
{
    return m_server->isListening() || m_socket->isOpen() || m_udp->isListening() || m_serial->isOpen();
}

void CameraDebugWidget::SltChangeProtocol(int)
{
    closeLink();
    showClosed();
}

// What has already come is taken in first. Half a frame belongs to the link that
// it came over.
void CameraDebugWidget::closeLink()
{
    m_server->closeAll();
    m_socket->takeAll();
    m_socket->flush();
    m_socket->abort();
    m_udp->takeRest();
    m_udp->abort();
    m_serial->close();
    if (!m_serialBytes.isEmpty())
        passSerialOn();
    m_streams.clear();
    m_config->stopRequests();
}

void CameraDebugWidget::closeLinks()
{
    closeLink();
    showClosed();
}

void CameraDebugWidget::SltOpenLink()
{
    if (isLinkOpen()) {
        closeLinks();
        notify(Notice::information(QStringLiteral("摄像头连接已关闭！")));
        return;
    }
    if (m_link->protocol() == CameraLinkPanel::Serial)
        return openSerial();
    if (!hasValidFields())
        return;
    switch (m_link->protocol()) {
    case CameraLinkPanel::TcpServer:
        return openServer();
    case CameraLinkPanel::TcpClient:
        return openClient();
    default:
        return openUdp();
    }
}

bool CameraDebugWidget::hasValidFields()
{
    const QString fault = m_link->checkFields();
    if (!fault.isEmpty())
        showFailed(fault);
    return fault.isEmpty();
}

void CameraDebugWidget::openServer()
{
    const quint16 port = m_link->port();
    if (m_server->listen(m_link->localAddress(), port)) {
        showOpened(QString());
        showPeers();
        notify(Notice::information(QStringLiteral("TCP服务监听[端口:%1]已启动!!").arg(port)));
        return;
    }
    showFailed(socketErrorText(m_server->serverError(), m_server->errorString()));
    notify(Notice::error(QStringLiteral("TCP服务监听[端口:%1]失败，请确认该端口是否可用!!").arg(port)));
}

void CameraDebugWidget::openClient()
{
    const QString connecting = QStringLiteral("正在连接，再次单击可取消");
    m_link->setOpenState(true);
    m_link->showState(connecting);
    m_status->state()->setState(StateIndicator::Busy, connecting);
    m_socket->connectToHost(m_link->serverAddress(), m_link->port());
}

void CameraDebugWidget::openUdp()
{
    const quint16 port = m_link->port();
    if (m_udp->listen(m_link->localAddress(), port)) {
        showOpened(QStringLiteral("正在接收端口%1的数据").arg(port));
        notify(Notice::information(QStringLiteral("UDP服务监听[端口:%1]已启动!!").arg(port)));
        return;
    }
    showFailed(socketErrorText(m_udp->error(), m_udp->errorString()));
    m_udp->abort();
    notify(Notice::error(QStringLiteral("UDP服务监听[端口:%1]失败，请确认该端口是否可用!!").arg(port)));
}

void CameraDebugWidget::openSerial()
{
    const QString entry = m_link->serialPort();
    if (entry.isEmpty()) {
        notify(Notice::error(QStringLiteral("当前系统未检测到任何串口，请重试!!!")));
        return;
    }
    if (m_link->baudRate() <= 0) {
        showFailed(QStringLiteral("波特率为空"));
        notify(Notice::error(QStringLiteral("波特率为空或不是正整数，串口未打开！")));
        return;
    }
    const QString name = PortName::fromEntry(entry);
    if (!name.isEmpty())
        m_serial->open(name, m_link->baudRate(), 8, 0, 0);
    if (!m_serial->isOpen()) {
        showFailed(QStringLiteral("串口打开失败"));
        notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(name.isEmpty() ? entry : name)));
        if (!name.isEmpty())
            notify(Notice::error(m_serial->reason()));
        return;
    }
    showOpened(QStringLiteral("串口[%1]已打开").arg(name));
    notify(Notice::information(QStringLiteral("串口[%1]打开成功!").arg(name)));
}

void CameraDebugWidget::showOpened(const QString &state)
{
    m_errors = 0;
    m_status->showErrors(0, {});
    m_link->setOpenState(true);
    m_link->showState(state);
    m_link->saveDefaults();
    m_status->state()->setOn(true);
    m_viewer->setHint(QStringLiteral("已打开，正在等待图像数据"));
}

void CameraDebugWidget::showClosed(const QString &state)
{
    m_link->setOpenState(false);
    m_link->showState(state);
    m_status->state()->setOn(false);
    m_viewer->setHint(kClosedHint);
}

void CameraDebugWidget::showFailed(const QString &why)
{
    m_link->setOpenState(false);
    m_link->showState(why, true);
    m_viewer->setHint(kClosedHint);
    m_status->state()->setState(StateIndicator::Failed, QStringLiteral("上次错误：%1").arg(why));
}

void CameraDebugWidget::showPeers()
{
    if (m_server->isListening())
        m_link->showState(QStringLiteral("正在监听端口%1，已连接%2个客户端")
                              .arg(m_server->serverPort())
                              .arg(m_server->clientCount()));
}

// ---- the client's socket

void CameraDebugWidget::clientConnected()
{
    showOpened(QStringLiteral("已连接到%1").arg(m_socket->peerText()));
    notify(Notice::information(QStringLiteral("[TCP Client]与服务器连接成功！！！")));
}

void CameraDebugWidget::clientDisconnected()
{
    QString error;
    if (m_socket->takeEnd(&error)) {
        m_streams.end(kFromServer);
        m_config->stopRequests();
        if (error.isEmpty())
            showClosed(QStringLiteral("服务器已断开连接"));
        else
            showFailed(error);
    }
    notify(Notice::information(QStringLiteral("[TCP Client]与服务器已断开连接~~~")));
}

void CameraDebugWidget::clientFailed(const QString &why)
{
    showFailed(QStringLiteral("连接失败：%1").arg(why));
    notify(Notice::error(QStringLiteral("[TCP Client]连接失败：%1").arg(why)));
}

void CameraDebugWidget::SltReadFromTcpSocket()
{
    if (m_gate->isOpen())
        m_socket->takeAll();
}

void CameraDebugWidget::SltTcpError(QAbstractSocket::SocketError error)
{
    qDebug() << m_socket->errorString() << "Socket error" << error;
}

// ---- datagrams

void CameraDebugWidget::SltReadyFromUdp()
{
    m_udp->takeAll(*m_gate);
}

// ---- the serial port

void CameraDebugWidget::gatherSerial(const QByteArray &bytes)
{
    m_serialBytes += bytes;
    if (m_serialBytes.size() >= kMostGathered)
        passSerialOn();
    else
        m_serialPause.start(kSerialPauseMs);
}

void CameraDebugWidget::passSerialOn()
{
    m_serialPause.stop();
    SltRecvSerialportData(std::exchange(m_serialBytes, {}));
}

void CameraDebugWidget::SltRecvSerialportData(QByteArray byData)
{
    SltRecvImageData(kFromSerial, byData);
}

void CameraDebugWidget::SltSerialportChanged(QStringList serialports)
{
    m_link->setSerialPorts(serialports);
    if (!m_serial->isOpen())
        return;
    for (const QString &entry : qAsConst(serialports))
        if (PortName::fromEntry(entry) == m_serial->portName())
            return;
    serialVanished();
}

void CameraDebugWidget::serialVanished()
{
    if (!m_serial->isOpen())
        return;
    closeLink();
    showClosed();
    notify(Notice::error(QStringLiteral("当前串口已拔出，请重新打开!")));
}

// ---- sending

// The bytes handed over; 0, after a notice, where nobody is there to take them.
qint64 CameraDebugWidget::send(const QByteArray &packet)
{
    qint64 sent = 0;
    switch (m_link->protocol()) {
    case CameraLinkPanel::TcpServer:
        sent = m_server->SltSendMsgToAllClient(packet);
        break;
    case CameraLinkPanel::TcpClient:
        sent = m_socket->send(packet);
        break;
    case CameraLinkPanel::Udp:
        sent = sendDatagram(packet);
        break;
    default:
        if (m_serial->isOpen()) {
            m_serial->writeBytes(packet);
            sent = packet.size();
        }
        break;
    }
    if (sent <= 0)
        notify(Notice::error(QStringLiteral("没有已连接的摄像头，数据未发送！")));
    return qMax<qint64>(0, sent);
}

qint64 CameraDebugWidget::sendDatagram(const QByteArray &packet)
{
    const QHostAddress address = m_link->destinationAddress();
    const bool isOpen = m_udp->isListening();
    if (!isOpen || address.isNull() || m_link->destinationPort() == 0)
        return 0;
    return m_udp->writeDatagram(packet, address, m_link->destinationPort());
}
