#pragma once

// The styles of a session's lines: which characters have a color or a face of
// their own. On disk but for the line that still grows; lines without styles
// take nothing.

#include "bytespool.h"

#include <QHash>
#include <QVector>

struct TextStyle
{
    // -1: as the display has it; 0 to 255: of the palette of terminals; with
    // isRgb added: red, green and blue, eight bits each.
    static constexpr int isRgb = 1 << 24;
    int text = -1;
    int ground = -1;
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isInverse = false;

    bool isPlain() const { return *this == TextStyle(); }
    bool operator==(const TextStyle &other) const
    {
        return text == other.text && ground == other.ground && flags() == other.flags();
    }
    bool operator!=(const TextStyle &other) const { return !(*this == other); }
    int flags() const
    {
        return (isBold ? 1 : 0) | (isItalic ? 2 : 0) | (isUnderlined ? 4 : 0) | (isInverse ? 8 : 0);
    }
    void setFlags(int flags)
    {
        isBold = (flags & 1) != 0;
        isItalic = (flags & 2) != 0;
        isUnderlined = (flags & 4) != 0;
        isInverse = (flags & 8) != 0;
    }
};

// Characters of one style; UTF-16 units.
struct StyledRun
{
    int begin = 0;
    int length = 0;
    TextStyle style;
};

class LineStyles
{
public:
    using Runs = QVector<StyledRun>;

    // The file is made in the folder, see ByteSpool.
    explicit LineStyles(const QString &folder);

    // Of the last line with styles, or a line behind it; behind the runs that are there.
    void add(qint64 line, const StyledRun &run);
    // The last line has so many characters.
    void chop(qint64 line, int length);
    void clear();

    bool isEmpty() const { return m_last < 0; }
    Runs of(qint64 line) const;

private:
    struct Block
    {
        qint64 line; // the first one
        qint64 at;   // bytes
    };

    void store();
    void read(int block) const;

    ByteSpool m_stored;
    QVector<Block> m_blocks;
    qint64 m_lastStored = 0; // number of a line
    qint64 m_last = -1;      // the line that m_open belongs to
    Runs m_open;
    mutable int m_readBlock = -1; // that m_read holds
    mutable QHash<qint64, Runs> m_read;
};
