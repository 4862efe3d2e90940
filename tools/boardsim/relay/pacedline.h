#pragma once

// One direction of a serial line: a driver's buffer and a wire that carries a
// byte in ten bits. Knows no clock: times are nanoseconds of one that never
// goes back. Time is counted on the wire itself, so that nothing adds up.

#include <QByteArray>

namespace Boardsim {

class PacedLine
{
public:
    static constexpr int bufferBytes = 4096;

    // Bits per second; 0 for a line that takes no time.
    explicit PacedLine(int baudRate);

    // How many bytes the buffer has room for.
    int room() const { return qMax(0, bufferBytes - m_buffer.size()); }
    bool isEmpty() const { return m_buffer.isEmpty(); }

    // Bytes from the sender; never refused, room() says when to stop reading.
    void append(const QByteArray &bytes, qint64 nowNs);
    // What has arrived at the other end by now.
    QByteArray take(qint64 nowNs);
    // The other end accepts nothing: the wire stands still until now.
    void hold(qint64 nowNs);
    // When the last byte of the buffer will have arrived.
    qint64 doneNs() const;

private:
    qint64 arrivalNs(qint64 bytes) const;

    int m_baudRate;
    QByteArray m_buffer;
    // The bytes in the buffer follow each other since m_startNs, when the wire
    // was free; m_carried bytes have arrived since.
    qint64 m_startNs = 0;
    qint64 m_carried = 0;
};

} // namespace Boardsim
