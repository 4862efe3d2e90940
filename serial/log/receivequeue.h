#pragma once

// Received bytes pending for display, and how they become text: rendered as
// hexadecimal or decoded as one stream, behind their headers, a slice at a
// time, so that a flood can be shown between other work.

#include "textcodec.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <deque>
#include <memory>

class ReceiveQueue
{
public:
    // A header (which may be empty) goes before the bytes.
    void push(const QByteArray &bytes, const QString &header, bool hex);

    // Bytes for the log view. The header is dropped where the stream is in the
    // middle of a line.
    void pushLog(const QByteArray &bytes, const QString &header);

    // A message among those of several sources. It begins a line when it has a
    // header or the message before it was shown in the other way. Each source
    // is a stream of its own; without a name, the message is one by itself.
    void pushMessage(const QByteArray &bytes, const QString &header, bool hex, const QString &source);
    // No more comes from it.
    void endSource(const QString &source);

    bool isEmpty() const { return m_chunks.empty(); }
    qint64 bytes() const { return m_bytes; } // that wait, with the characters of their headers

    struct Slice
    {
        QString text; // every line end is "\n"
        // What the text was decoded from, headers in Latin-1 included; empty for
        // hexadecimal and for messages.
        QByteArray bytes;
        bool log = false; // for the log view; a slice is all for it or not at all
    };

    // Removes about so many characters' worth of what is pending, decoded with
    // the codec of the index. Neither a character nor a line end that two chunks
    // share is shown twice or as something else.
    Slice take(int characters, int codecIndex);

    // Forgets what waits, and the stream's state.
    void clear();

private:
    enum class Kind { Stream, Log, Message, SourceEnd };

    struct Chunk
    {
        QByteArray bytes;
        QString header;
        QString source;
        Kind kind = Kind::Stream;
        bool hex = false;
        int taken = 0;
    };

    // What is known of the bytes before the next ones.
    struct Stream
    {
        StreamDecoder decoder;
        bool afterCarriageReturn = false; // a line feed that follows belongs to it
        QString take(const char *bytes, int count, int codecIndex);
        void reset();
    };

    void begin(const Chunk &chunk, Slice *slice);
    void takeBytes(const Chunk &chunk, int count, int codecIndex, Slice *slice);
    QString textOf(const Chunk &chunk, int count, int codecIndex);

    std::deque<Chunk> m_chunks;
    qint64 m_bytes = 0;
    Stream m_stream;
    QHash<QString, std::shared_ptr<Stream>> m_sources;
    bool m_atLineStart = true;       // with what was handed out
    bool m_streamAtLineStart = true; // with the bytes that were decoded as a stream
    bool m_lastWasHex = false;
};
