#pragma once

// What a serial driver still has to transmit, and handing it more.

#include <QSerialPort>

// Bytes of an open port that the system has accepted and not yet handed to the
// transmitter; 0 where it cannot tell.
qint64 outputQueue(const QSerialPort &port);

// Hands queued bytes to the system now rather than in the event loop's next
// turn, as far as it takes them.
void flushOutput(QSerialPort &port);
