#pragma once

#include <QTcpServer>

// A TCP port of this machine that is free at present. For programs that must
// be told a port; a test's own servers listen at port 0 instead.
inline quint16 freePort()
{
    QTcpServer probe;
    probe.listen();
    return probe.serverPort();
}
