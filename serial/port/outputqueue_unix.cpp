#include "outputqueue.h"

#include <poll.h>
#include <sys/ioctl.h>

qint64 outputQueue(const QSerialPort &port)
{
    int bytes = 0;
    return port.isOpen() && ioctl(port.handle(), TIOCOUTQ, &bytes) == 0 ? bytes : 0;
}

// The library takes a full driver for a lost one, so that is asked first.
void flushOutput(QSerialPort &port)
{
    pollfd line = {port.isOpen() ? port.handle() : -1, POLLOUT, 0};
    if (port.bytesToWrite() > 0 && poll(&line, 1, 0) == 1 && (line.revents & POLLOUT) != 0)
        port.flush();
}
