#pragma once

// A set of line numbers that grows at its end: a bit for each line, so that
// twenty million lines take three megabytes. Counting and finding by position
// take constant time, but for a walk over some hundred bytes.

#include <QVector>

class LineSet
{
public:
    // Not below the last one.
    void add(qint64 line);
    // Drops the lines from one on.
    void truncate(qint64 line);
    void clear() { truncate(0); }

    qint64 count() const { return m_count; }
    bool contains(qint64 line) const;
    bool isAnyIn(qint64 first, qint64 end) const;
    // How many are below a line.
    qint64 countBelow(qint64 line) const;
    // By its position, below count().
    qint64 at(qint64 position) const;

private:
    static constexpr int kWordBits = 64;
    static constexpr int kGroupWords = 64; // words with a common count

    QVector<quint64> m_words;
    QVector<qint64> m_counts; // before each group
    qint64 m_count = 0;
};
