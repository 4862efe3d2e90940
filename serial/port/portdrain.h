#pragma once

// Waits until what was written to an open port has left it, for a limited
// time; what has not left by then is dropped. Nothing blocks unless asked to.

#include "linedrain.h"

#include <QObject>
#include <QTimer>

class QSerialPort;

class PortDrain : public QObject
{
    Q_OBJECT

public:
    // Nanoseconds of a clock that only goes forward.
    static qint64 nowNs();
    // The time a byte takes with the port's present settings.
    static qint64 byteNs(const QSerialPort &port);
    // Bytes that were written and are not with the transmitter yet, as far as
    // the system can tell.
    static qint64 pendingBytes(const QSerialPort &port);
    // Hands queued bytes to the system now rather than in the event loop's next
    // turn, as far as it accepts them.
    static void flush(QSerialPort &port);

    // The port stays open and its owner's, and has to outlive this.
    PortDrain(QSerialPort *port, qint64 lineFreeAtNs, QObject *parent = nullptr);

    // Emits finished(), from within when that takes no longer than one frame
    // of the screen.
    void start();
    // Ends at once; what has not left is dropped.
    void giveUp();
    // Blocks until the end.
    void finishNow();

    // Stops waiting; nothing is dropped or emitted.
    void cancel();

signals:
    // Once. unsentBytes: the minimum of what was dropped.
    void finished(qint64 unsentBytes);

private:
    bool isExpectedWithin(qint64 ns) const;
    void waitFor(qint64 ns);
    void check();
    void finish(qint64 unsentBytes);

    QSerialPort *m_port;
    LineDrain m_drain;
    QTimer m_timer;
    bool m_finished = false;
};
