#include "socketsystem.h"

// The declarations only: an older Windows fails the call.
#undef _WIN32_WINNT
#undef NTDDI_VERSION
#define _WIN32_WINNT 0x0A00
#define NTDDI_VERSION 0x0A000003 // Windows 10, version 1703

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

qint64 unacknowledged(qintptr descriptor)
{
    DWORD version = 0;
    TCP_INFO_v0 state{};
    DWORD size = 0;
    const bool known = WSAIoctl(static_cast<SOCKET>(descriptor), SIO_TCP_INFO, &version, sizeof version,
                                &state, sizeof state, &size, nullptr, nullptr) == 0;
    return known ? static_cast<qint64>(state.BytesInFlight) : 0;
}

} // namespace SocketSystem
