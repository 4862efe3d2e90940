#pragma once

// The lines of a session, for as long as it lasts: text and arrival time of each
// on disk, in memory an index entry for some hundred lines. Any line is found by its
// number in the time of one read. Knows no widget and no clock.
//
// Line ends are "\n"; the last line may still grow.

#include "bytespool.h"

#include <QString>
#include <QVector>
#include <limits>

class LineSet;

class LineStore
{
public:
    enum class Origin : quint8 { Received, Sent };

    struct Line
    {
        QString text;         // without its end
        qint64 arrivalMs = 0; // of its first character, since the epoch
        Origin origin = Origin::Received;
        bool isCut = false; // the text goes on
    };

    // The files are made in the folder, see ByteSpool.
    explicit LineStore(const QString &folder);

    // Times never decrease; where they do, that of the line before is kept.
    // Text of another origin begins a line of its own.
    void append(const QString &text, qint64 arrivalMs, Origin origin = Origin::Received);
    // Removes the end of the text, which must be within the last line.
    void chop(const QString &end);
    int chops() const { return m_chops; } // so far
    void clear();
    // How often it was cleared.
    int generation() const { return m_generation; }

    // A last line without text is not counted.
    qint64 size() const { return m_size + (m_isLineOpen ? 1 : 0); }
    // Of the lines that have an end; the number of the line that comes next, or grows.
    qint64 completeLines() const { return m_size; }
    // Up to `count` lines from one on, each with up to so many UTF-8 bytes of text,
    // and no more when they have so many bytes together. Fewer at the end, or where
    // the file cannot be read back; of them only those in a set.
    QVector<Line> lines(qint64 first, int count, int maxBytes = 64 * 1024,
                        qint64 maxTotal = std::numeric_limits<qint64>::max(),
                        const LineSet *only = nullptr) const;

    // Bytes of a line that are taken out of the store together with others.
    static constexpr int maxExtractedLine = 8 * 1024 * 1024;

    QString line(qint64 number) const; // its text; empty where there is none

    // Text of lines that follow each other.
    struct Extract
    {
        QString text;
        int count = 0;      // lines in it; one that is empty at the end counts
        bool isEnd = false; // of all lines
    };
    // From a line on, up to so many lines and about so many bytes, but one line at
    // least. The last one is without its end, so that a line which still grows, or
    // an empty one, is the last.
    Extract extract(qint64 first, int maxLines, qint64 maxBytes) const;
    // The lines before one, each with its end.
    Extract extractBefore(qint64 line, int maxLines, qint64 maxBytes) const;
    // The end of all text.
    QString tail(int maxCharacters, int maxLines) const;

    // UTF-8, with all line ends.
    const ByteSpool &text() const { return m_text; }
    // See ByteSpool.
    bool isComplete() const { return m_text.state() != ByteSpool::State::Incomplete; }
    // Of the index; the spools keep little.
    qint64 memoryBytes() const { return qint64(m_blocks.capacity()) * qint64(sizeof(Block)); }

private:
    // The lines from one on, until the next block's.
    struct Block
    {
        qint64 line;
        qint64 textAt; // bytes
        qint64 timeAt; // bytes
        qint64 ms;     // the time that the first line's is counted from
    };

    void beginLine(qint64 arrivalMs, Origin origin);
    const Block &blockOf(qint64 line) const;
    qint64 firstWithin(qint64 line, qint64 bytes) const;

    ByteSpool m_text;  // see text()
    ByteSpool m_times; // see beginLine()
    QVector<Block> m_blocks;
    qint64 m_size = 0; // complete lines
    qint64 m_lastMs = 0;
    Origin m_origin = Origin::Received; // of the last line
    qint64 m_lineAt = 0;                // bytes; of its begin
    bool m_isLineOpen = false;
    bool m_isBegun = false; // a line that lost all of its text
    int m_generation = 0;
    int m_chops = 0;
};
