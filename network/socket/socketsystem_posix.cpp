#include "socketsystem.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#ifdef __linux__
#include <linux/sockios.h>
#endif

namespace {

void set(qintptr descriptor, int level, int option, int value)
{
    ::setsockopt(static_cast<int>(descriptor), level, option, &value, sizeof value);
}

} // namespace

namespace SocketSystem {

void lengthenListenQueue(qintptr listeningDescriptor)
{
    ::listen(static_cast<int>(listeningDescriptor), SOMAXCONN);
}

void watchPeer(qintptr descriptor)
{
    set(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
#ifdef TCP_KEEPIDLE
    set(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, 30); // seconds
    set(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, 10);
    set(descriptor, IPPROTO_TCP, TCP_KEEPCNT, 3);
#endif
}

void endSending(qintptr descriptor)
{
    ::shutdown(static_cast<int>(descriptor), SHUT_WR);
}

qint64 unacknowledged(qintptr descriptor)
{
    int bytes = 0;
#ifdef SIOCOUTQ
    if (::ioctl(static_cast<int>(descriptor), SIOCOUTQ, &bytes) != 0)
        return 0;
#endif
    return bytes;
}

} // namespace SocketSystem
