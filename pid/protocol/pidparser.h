#pragma once

// Parses the reports of a board. Owns the bytes that are not parsed yet and the
// times at which they were read; knows no clock and no page.
//
// Deliberately lenient: the checksum is ignored and the length is trusted. A
// length of 0 or less blocks the bytes behind it until the buffer is cleared; a
// length that is never reached blocks them until the caller skips it.

#include "bytequeue.h"
#include "pidframe.h"

#include <deque>

struct PidReport
{
    quint8 command = 0;   // PidFrame::Report, or 0, which means nothing
    quint8 channel = 1;   // 1 to 5
    qint32 value = 0;     // of a target, an actual value or a period
    PidGains gains;       // as received: NaN and infinities too
    qint64 arrivalUs = 0; // when its last byte was read
};

class PidParser
{
public:
    enum class Outcome {
        Report,  // one was parsed
        Dropped, // a frame without a known channel or command was removed
        Waiting, // for the rest of a frame
    };

    // Microseconds, never less than those of the bytes before.
    void append(const QByteArray &bytes, qint64 arrivalUs);
    void clear();

    // One pass: skips to a frame and removes it if it is complete. A caller
    // continues while it gets reports; what a run leaves is parsed by the next.
    Outcome next(PidReport *report);

    int size() const { return m_pending.size(); } // bytes not parsed yet

    // The frame at the front has a length of 0 or less. The number of bytes kept
    // behind it is limited.
    bool isBlocked() const;
    // The frame at the front is far longer than any of the protocol, as after a
    // board's reset in the middle of a length.
    bool isOverlong() const;
    void skipHead(); // treats the front as garbage

private:
    struct Arrival
    {
        qint64 end; // of the bytes read then, counted from the first byte of all
        qint64 us;
    };

    bool hasHead() const;  // a frame up to its command is at the front
    qint32 length() const; // as in its header
    void resynchronize();
    void drop(int bytes);
    void findArrival(qint64 byte); // sets m_arrival; earlier bytes are not asked for again

    ByteQueue m_pending;
    qint64 m_parsed = 0; // bytes before those pending
    std::deque<Arrival> m_arrivals;
    Arrival m_arrival{0, 0}; // of the first pending byte, or an earlier one
};
