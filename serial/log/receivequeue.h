#pragma once

// Received bytes that are pending for display, and how they become text:
// rendered as hexadecimal or decoded as one stream, behind their headers, a
// slice at a time, so that a flood can be shown between other work.

#include "linestore.h"
#include "terminaltext.h"
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

    enum class Kind : quint8 {
        // Bytes of the stream behind a header, which may be empty. With the bound on
        // text, the header is left out where the stream is in the middle of a line.
        // Hexadecimal has no bound.
        Stream,
        // A message among those of several sources. It begins a line when it has a
        // header or the message before it was shown in the other way. Each source
        // is a stream of its own; without a name, the message is one by itself.
        Message,
        // The source sends no more.
        SourceEnd,
        // What was sent: lines of their own.
        Sent,
    };
    struct Chunk
    {
        QByteArray bytes;
        QString header;
        QString source;
        Kind kind = Kind::Stream;
        bool hex = false;
        Bound bound = Bound::None;
        qint64 arrivalMs = 0; // since the epoch
    };

    void push(const Chunk &chunk);

    // How text is shown from now on.
    void setOptions(TerminalText::Options options);
    TerminalText::Options options() const { return m_options; }
    // Escape sequences were shown as they stand.
    bool hasSeenSequences() const { return m_hasSeenSequences; }

    bool isEmpty() const { return m_chunks.empty(); }
    qint64 bytes() const { return m_bytes; } // pending, and the characters of their headers
    Bound frontBound() const { return m_chunks.empty() ? Bound::None : m_chunks.front().bound; }

    // Text up to an end came at a time, or was sent.
    struct Part
    {
        int end;
        qint64 ms;
        LineStore::Origin origin;
    };
    struct Slice
    {
        QString removed; // the end of the text before it
        QString text;    // in its place; every line end is "\n"
        QVector<Part> parts;
        QVector<StyledRun> runs; // by position in the text
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
    struct Pending : Chunk
    {
        int popped = 0; // bytes
    };

    // What is known of the bytes before the next ones.
    struct Stream
    {
        StreamDecoder decoder;
        TerminalText terminal;
        bool afterCarriageReturn = false; // a line feed that follows belongs to it
        void reset();
    };

    void begin(const Chunk &chunk, Slice *slice);
    bool isAtLineStart(const Slice &slice) const;
    void popBytes(const Pending &chunk, int count, int codecIndex, Slice *slice);
    void popText(const Pending &chunk, int count, int codecIndex, Slice *slice);
    void popSent(const Chunk &chunk, int codecIndex, Slice *slice);
    QString decode(Stream *stream, const char *bytes, int count, int codecIndex);
    void addText(const QString &text, Slice *slice);
    static void add(const TerminalText::Output &output, Slice *slice);
    static void addPart(qint64 ms, LineStore::Origin origin, Slice *slice);

    std::deque<Pending> m_chunks;
    qint64 m_bytes = 0;
    Stream m_stream;
    QHash<QString, Stream> m_sources;
    const Stream *m_onLine = nullptr; // whose text was shown last, with nothing behind it
    TerminalText::Options m_options;
    bool m_hasSeenSequences = false;
    bool m_atLineStart = true;       // behind what was popped
    bool m_streamAtLineStart = true; // behind the bytes that were decoded as a stream
    bool m_lastWasHex = false;
};
