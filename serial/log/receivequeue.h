#pragma once

// Received bytes that are pending for display, and how they become text:
// rendered as hexadecimal or decoded as one stream, behind their headers, a
// slice at a time, so that a flood can be shown between other work.

#include "textcodec.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>
#include <deque>

class ReceiveQueue
{
public:
    // What the display is to hold of a stream's text: all that it can, or the
    // decoding of the newest bytes (log mode, see ReceiveBuffer).
    enum class Bound { None, Newest };

    // Bytes of the stream behind a header, which may be empty. With the bound on
    // text, the header is left out where the stream is in the middle of a line.
    // Hexadecimal has no bound.
    // Arrival times are milliseconds since the epoch.
    void push(const QByteArray &bytes, const QString &header, bool hex, Bound bound = Bound::None,
              qint64 arrivalMs = 0);

    // A message among those of several sources. It begins a line when it has a
    // header or the message before it was shown in the other way. Each source
    // is a stream of its own; without a name, the message is one by itself.
    void pushMessage(const QByteArray &bytes, const QString &header, bool hex, const QString &source,
                     qint64 arrivalMs = 0);
    // The source sends no more.
    void endSource(const QString &source);

    bool isEmpty() const { return m_chunks.empty(); }
    qint64 bytes() const { return m_bytes; } // pending, and the characters of their headers
    Bound frontBound() const { return m_chunks.empty() ? Bound::None : m_chunks.front().bound; }

    // Text up to an end came at a time.
    struct Arrival
    {
        int end;
        qint64 ms;
    };
    struct Slice
    {
        QString text; // every line end is "\n"
        QVector<Arrival> arrivals;
        // What the text was decoded from, headers in Latin-1 included; empty for
        // hexadecimal and for messages.
        QByteArray bytes;
        Bound bound = Bound::None; // of all of it
    };

    // Removes about so many characters' worth of what is pending, decoded with
    // the codec of the index. Neither a character nor a line end that two chunks
    // share is shown twice or as something else.
    Slice pop(int characters, int codecIndex);

    // Drops what is pending, and what is known of the streams.
    void clear();

private:
    enum class Kind { Stream, Message, SourceEnd };

    struct Chunk
    {
        QByteArray bytes;
        QString header;
        QString source;
        Kind kind = Kind::Stream;
        bool hex = false;
        Bound bound = Bound::None;
        qint64 arrivalMs = 0;
        int popped = 0; // bytes
    };

    // What is known of the bytes before the next ones.
    struct Stream
    {
        StreamDecoder decoder;
        bool afterCarriageReturn = false; // a line feed that follows belongs to it
        QString decode(const char *bytes, int count, int codecIndex);
        void reset();
    };

    void begin(const Chunk &chunk, Slice *slice);
    void popBytes(const Chunk &chunk, int count, int codecIndex, Slice *slice);
    QString textOf(const Chunk &chunk, int count, int codecIndex);

    std::deque<Chunk> m_chunks;
    qint64 m_bytes = 0;
    Stream m_stream;
    QHash<QString, Stream> m_sources;
    bool m_atLineStart = true;       // behind what was popped
    bool m_streamAtLineStart = true; // behind the bytes that were decoded as a stream
    bool m_lastWasHex = false;
};
