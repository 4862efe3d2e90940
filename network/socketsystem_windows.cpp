#include "network/socketsystem.h"

#include <winsock2.h>

#include <mstcpip.h>

namespace SocketSystem {

void lengthenListenQueue(qintptr)
{
}

void watchPeer(qintptr descriptor)
{
    tcp_keepalive times{1, 30000, 10000}; // on, milliseconds idle, between attempts
    DWORD size = 0;
    WSAIoctl(static_cast<SOCKET>(descriptor), SIO_KEEPALIVE_VALS, &times, sizeof times, nullptr, 0, &size,
             nullptr, nullptr);
}

void endSending(qintptr descriptor)
{
    ::shutdown(static_cast<SOCKET>(descriptor), SD_SEND);
}

} // namespace SocketSystem
