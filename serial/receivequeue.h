#pragma once

// Received bytes that wait to be shown, and how they become text: rendered as
// hexadecimal or decoded as one stream, behind their headers, a slice at a
// time, so that a flood can be shown between other work.

#include "app/textcodec.h"

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

    // A message among those of several sources. It begins a line when it has a
    // header or the message before it was shown in the other way. Each source
    // is a stream of its own; without a name, the message is one by itself.
    void pushMessage(const QByteArray &bytes, const QString &header, bool hex, const QString &source);
    // No more comes from it.
    void endSource(const QString &source);

    bool isEmpty() const { return m_chunks.empty(); }
    qint64 bytes() const { return m_bytes; } // that wait, with the characters of their headers

    // The text of about so many characters' worth of what waits, decoded with
    // the codec of the index; every line end is "\n". Neither a character nor
    // a line end that two chunks share is shown twice or as something else.
    QString take(int characters, int codecIndex);

    // Forgets what waits, and the stream's state.
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

    QString beginning(const Chunk &chunk, bool atLineStart);
    QString textOf(const Chunk &chunk, int count, int codecIndex);

    std::deque<Chunk> m_chunks;
    qint64 m_bytes = 0;
    Stream m_stream;
    QHash<QString, std::shared_ptr<Stream>> m_sources;
    bool m_atLineStart = true; // with what was handed out
    bool m_lastWasHex = false;
};
