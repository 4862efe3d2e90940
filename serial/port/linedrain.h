#pragma once

// Decides when the bytes that were written to a serial line have left it, and
// when waiting for them has to time out. Knows no port and reads no
// clock; times are nanoseconds of the caller's clock.

#include <QtGlobal>

class LineDrain
{
public:
    enum class State { Pending, Left, TimedOut };

    // What a transmitter may still hold when the system has handed over all
    // bytes: the buffer of a UART or of a USB adapter.
    static constexpr qint64 transmitterBytes = 256;

    // The time a byte takes on the line.
    static qint64 byteNs(int baudRate, int bitsPerByte);

    // pendingBytes are still with the system at nowNs. By the baud rate, the
    // line has carried everything that was written at lineFreeAtNs.
    LineDrain(qint64 nowNs, qint64 pendingBytes, qint64 byteNs, qint64 lineFreeAtNs);

    // A line that carries nothing for a second, or is not done well after the
    // baud rate says that it should be, times out; so does any after 10 s.
    State check(qint64 nowNs, qint64 pendingBytes);

    // The time from now until the end, at the speed of the baud rate.
    qint64 expectedNs(qint64 nowNs, qint64 pendingBytes) const;

private:
    qint64 m_byteNs;
    qint64 m_lineFreeAtNs;
    qint64 m_deadlineNs;
    qint64 m_pendingBytes;
    qint64 m_progressAtNs;
    qint64 m_emptyAtNs = -1; // when the system had handed over all bytes
};
