#include "network/listenqueue.h"

void lengthenListenQueue(qintptr)
{
}
