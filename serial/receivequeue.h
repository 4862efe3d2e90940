#pragma once

// Received bytes that wait to be shown, and how they become text: rendered as
// hexadecimal or decoded as one stream, behind their headers, a slice at a
// time, so that a flood can be shown between other work.

#include "app/textcodec.h"

#include <QByteArray>
#include <QString>
#include <deque>

class ReceiveQueue
{
public:
    // A header (which may be empty) goes before the bytes.
    void push(const QByteArray &bytes, const QString &header, bool hex);

    bool isEmpty() const { return m_chunks.empty(); }
    qint64 bytes() const; // that wait

    // The text of about so many characters' worth of what waits, decoded with
    // the codec of the index; every line end is "\n". Neither a character nor
    // a line end that two chunks share is shown twice or as something else.
    QString take(int characters, int codecIndex);

    // Forgets what waits, and the stream's state.
    void clear();

private:
    struct Chunk
    {
        QByteArray bytes;
        QString header;
        bool hex = false;
        int taken = 0;
    };

    QString takeText(const char *bytes, int count, int codecIndex);

    std::deque<Chunk> m_chunks;
    StreamDecoder m_decoder;
    bool m_afterCarriageReturn = false; // a line feed that follows belongs to it
};
