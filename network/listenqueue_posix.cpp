#include "network/listenqueue.h"

#include <sys/socket.h>

void lengthenListenQueue(qintptr listeningDescriptor)
{
    ::listen(static_cast<int>(listeningDescriptor), SOMAXCONN);
}
