#include "udplink.h"

#include "socketerror.h"

#include <QNetworkDatagram>
#include <QUdpSocket>

namespace {
constexpr int kBufferBytes = 8 * 1024 * 1024; // asked of the system, which may give less
constexpr int kMaxRest = 16 * 1024;           // datagrams; more of them don't fit there
} // namespace

UdpLink::UdpLink(QObject *parent)
    : Link(parent)
    , m_socket(new QUdpSocket(this))
{
    connect(m_socket, &QUdpSocket::readyRead, this, &UdpLink::readAll);
}

UdpLink::~UdpLink()
{
    m_socket->disconnect(this);
}

bool UdpLink::open(const Settings &settings)
{
    if (state() != State::Closed)
        return false;
    // Not shared: of two programs on one port, the system would choose who hears. Of
    // a group's datagrams each hears all.
    const QUdpSocket::BindMode mode = settings.multicast.groups.isEmpty()
                                          ? QUdpSocket::BindMode(QUdpSocket::DontShareAddress)
                                          : QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint;
    if (!m_socket->bind(Multicast::addressFor(settings.multicast, settings.address), settings.port, mode)) {
        const QString reason = openErrorText(m_socket->error(), m_socket->errorString(),
                                             toolUsing(SocketResource::udp(settings.port)));
        m_socket->abort();
        setState(State::Closed, reason);
        return false;
    }
    m_socket->setSocketOption(QUdpSocket::ReceiveBufferSizeSocketOption, kBufferBytes);
    m_joined = Multicast::join(m_socket, settings.multicast);
    setResource(SocketResource::udp(port()));
    setState(State::Open);
    return true;
}

quint16 UdpLink::port() const
{
    return m_socket->localPort();
}

void UdpLink::setDestination(const QHostAddress &address, quint16 port)
{
    m_destination = address;
    m_destinationPort = port;
}

QString UdpLink::checkSending(const QByteArray &bytes) const
{
    if (m_destination.isNull() || m_destination == QHostAddress::AnyIPv4 ||
        m_destination == QHostAddress::AnyIPv6)
        return QStringLiteral("UDP目的地址配置错误！");
    if (m_destinationPort == 0)
        return QStringLiteral("UDP目的端口配置错误！");
    if (bytes.size() > maxDatagramBytes)
        return QStringLiteral("数据超过%1字节，无法作为一个UDP数据报发送！").arg(maxDatagramBytes);
    return {};
}

qint64 UdpLink::accept(const QByteArray &bytes, quint64 peer)
{
    if (!isOpen() || peer != allPeers)
        return 0;
    setRefusal(checkSending(bytes));
    if (!refusal().isEmpty())
        return 0;
    const qint64 sent = m_socket->writeDatagram(bytes, m_destination, m_destinationPort);
    if (sent < 0) {
        setRefusal(QStringLiteral("数据发送失败：%1")
                       .arg(socketErrorText(m_socket->error(), m_socket->errorString())));
        return 0;
    }
    emit handedOver(sent, {0, m_destination, m_destinationPort});
    return sent;
}

// Reads not more than the system's buffer holds: senders may go on meanwhile.
void UdpLink::close()
{
    if (state() == State::Closed)
        return;
    setState(State::Closing);
    for (int i = 0; i < kMaxRest && readOne(); ++i) {
    }
    m_socket->abort();
    setState(State::Closed);
}

void UdpLink::readingChanged()
{
    readAll();
}

void UdpLink::readAll()
{
    for (int i = 0; i < kMaxRest && isReading() && readOne(); ++i) {
    }
}

bool UdpLink::readOne()
{
    if (m_socket->state() != QUdpSocket::BoundState || !m_socket->hasPendingDatagrams())
        return false;
    const QNetworkDatagram datagram = m_socket->receiveDatagram();
    if (!datagram.isValid())
        return false;
    const Peer sender{0, datagram.senderAddress(), quint16(datagram.senderPort())};
    emit received(datagram.data(), nowUs(), sender);
    return true;
}
