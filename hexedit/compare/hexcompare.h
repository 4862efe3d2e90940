#pragma once

// Compares a document with other bytes, a slice at a time, and lists where they differ. Bytes stand at
// the same offset in both, or, where insertions are to be found, at offsets that shift
// with each insertion and removal of up to maxShift bytes. Neither must change meanwhile.

#include "hexbytes.h"

#include <algorithm>
#include <vector>

class HexCompare
{
public:
    static constexpr size_t maxDifferences = 1000000;
    static constexpr int maxShift = 1 << 16; // bytes

    // One side's length is 0 where the other one has more bytes. `row` counts bytes of
    // both side by side: what only one side has takes its length on both.
    struct Difference
    {
        qint64 row = 0;
        qint64 left = 0;
        qint64 leftLength = 0;
        qint64 right = 0;
        qint64 rightLength = 0;

        qint64 length() const { return std::max(leftLength, rightLength); }
    };

    HexCompare(const HexDocument &left, const HexBytes &right, bool findsInsertions);
    Q_DISABLE_COPY_MOVE(HexCompare)

    // False at the end, or where there are too many differences or the other bytes can't be
    // read: the rest is unknown.
    bool step();
    bool isCut() const { return m_differences.size() >= maxDifferences; }
    bool hasFailed() const { return m_hasFailed; } // to read the other bytes
    int permille() const;
    const std::vector<Difference> &differences() const { return m_differences; }
    qint64 rows() const { return m_row; } // bytes side by side, so far

private:
    struct Shift
    {
        qint64 left = 0;
        qint64 right = 0;
    };

    qint64 equalBytes(qint64 limit);
    qint64 differentBytes(qint64 limit);
    void addDifference(qint64 left, qint64 right);
    Shift findShift() const;
    Shift findShift(int window) const;

    const HexDocument &m_left;
    const HexBytes &m_right;
    bool m_findsInsertions;
    qint64 m_leftAt = 0;
    qint64 m_rightAt = 0;
    qint64 m_row = 0;
    bool m_hasFailed = false;
    std::vector<Difference> m_differences;
};
