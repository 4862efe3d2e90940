#pragma once

// The forms of a session log: what is written for bytes that came or went. Text and
// rows go on from one record to the next, so one object makes one file.

#include <QByteArray>

class LogForm
{
public:
    enum Kind {
        Received, // the received bytes as they came, and nothing else
        Text,     // the bytes of both directions, each line behind its time and direction
        Dump,     // rows of 16 bytes, hexadecimal and as characters
    };
    enum Direction { In, Out, Event };

    struct Record
    {
        Direction direction = In;
        qint64 timeUs = 0; // since 1970
        QByteArray bytes;  // of an event: its text, in the encoding of the file
        QByteArray peer;   // where a link has several
    };

    explicit LogForm(Kind kind)
        : m_kind(kind)
    {
    }

    QByteArray add(const Record &record);
    // The row or line that is open is complete: nothing came for a while, or the file
    // ends.
    QByteArray endRow();
    bool isInRow() const { return !m_row.isEmpty(); }

private:
    QByteArray addText(const Record &record);
    QByteArray addRows(const Record &record);
    QByteArray prefix(const Record &record);
    QByteArray timeText(qint64 timeUs);
    bool continues(const Record &record) const;

    Kind m_kind;
    bool m_isLineOpen = false;
    Record m_last;             // without its bytes
    QByteArray m_row;          // of a dump, not written yet
    QByteArray m_rowPrefix;    // of its first byte
    quint64 m_offsets[2] = {}; // of its first byte, for each direction
    qint64 m_textMs = -1;
    QByteArray m_timeText;
};
