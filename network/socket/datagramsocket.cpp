#include "datagramsocket.h"

#include "peeraddress.h"
#include "readgate.h"

#include <QNetworkDatagram>

namespace {
constexpr int kBufferBytes = 8 * 1024 * 1024; // asked of the system, which may give less
constexpr int kMaxRest = 16 * 1024;           // datagrams; more of them don't fit there
} // namespace

bool DatagramSocket::listen(const QHostAddress &address, quint16 port)
{
    // Not shared: of two programs on one port, the system would choose who hears.
    if (!bind(address, port, DontShareAddress))
        return false;
    setSocketOption(ReceiveBufferSizeSocketOption, kBufferBytes);
    return true;
}

void DatagramSocket::takeAll(const ReadGate &gate)
{
    while (gate.isOpen() && takeOne()) {
    }
}

// Not more than the system's buffer holds: senders may go on meanwhile.
void DatagramSocket::takeRest()
{
    for (int i = 0; i < kMaxRest && takeOne(); ++i) {
    }
}

bool DatagramSocket::takeOne()
{
    if (!isListening() || !hasPendingDatagrams())
        return false;
    const QNetworkDatagram datagram = receiveDatagram();
    if (!datagram.isValid())
        return false;
    emit received(
        QStringLiteral("%1:%2").arg(PeerAddress::text(datagram.senderAddress())).arg(datagram.senderPort()),
        datagram.data());
    return true;
}
