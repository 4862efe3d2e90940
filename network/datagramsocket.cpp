#include "network/datagramsocket.h"

#include "network/peeraddress.h"
#include "network/readgate.h"

#include <QNetworkDatagram>

namespace {
constexpr int kBufferBytes = 8 * 1024 * 1024; // asked of the system, which may give less
}

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
    while (isListening() && gate.isOpen() && hasPendingDatagrams()) {
        const QNetworkDatagram datagram = receiveDatagram();
        if (!datagram.isValid())
            return;
        emit received(QStringLiteral("%1:%2")
                          .arg(PeerAddress::text(datagram.senderAddress()))
                          .arg(datagram.senderPort()),
                      datagram.data());
    }
}
