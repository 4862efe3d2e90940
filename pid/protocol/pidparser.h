#pragma once

// Takes reports out of what the board has sent. Its only state is the buffer of
// bytes that are not used yet; it knows no clock and no page.
//
// Deliberately lenient: the checksum is not looked at and the length is
// believed. A length of 0 or less keeps everything waiting behind it until the
// buffer is cleared, and so does one that is never reached until the caller
// gives it up.

#include "pidframe.h"

struct PidReport
{
    quint8 command = 0; // PidFrame::Report, or 0, which means nothing
    quint8 channel = 1; // 1 to 5
    qint32 value = 0;   // of a target, an actual value or a period
    float p = 0;        // of PID parameters, as they came: NaN and infinities too
    float i = 0;
    float d = 0;
};

class PidParser
{
public:
    enum class Outcome {
        Report,  // one is in the argument
        Dropped, // a frame without a known channel or command was taken out
        Waiting, // for the rest of a frame
    };

    void append(const QByteArray &bytes);
    void clear();

    // One pass: skips to a frame and takes it out, if it is whole. A caller
    // goes on while it gets reports; what a run leaves waits for the next.
    Outcome next(PidReport *report);

    int size() const { return m_buffer.size() - m_at; } // bytes not used yet

    // In front is a length of 0 or less; what waits behind it is bounded.
    bool isBlocked() const;
    // In front is a length far beyond any frame of the protocol, as after a
    // board's reset in the middle of a length.
    bool isOverlong() const;
    void skipHead(); // takes what is in front for garbage

private:
    bool hasHead() const;  // a frame up to its command is in front
    qint32 length() const; // as announced by it
    void resynchronise();
    void compact();

    QByteArray m_buffer;
    int m_at = 0; // before it everything is used
};
