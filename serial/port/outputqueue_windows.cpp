#include "outputqueue.h"

#include <qt_windows.h>

qint64 outputQueue(const QSerialPort &port)
{
    DWORD errors = 0;
    COMSTAT status = {};
    if (!port.isOpen() || !ClearCommError(port.handle(), &errors, &status))
        return 0;
    return status.cbOutQue;
}

void flushOutput(QSerialPort &port)
{
    if (port.isOpen())
        port.flush();
}
