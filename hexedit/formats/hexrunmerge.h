#pragma once

// Brings stretches of bytes, as records give them, into the order of their
// addresses. Where two overlap, the later one wins. The work is n log n at worst
// and done in slices; nothing where the stretches are in order already.

#include "hexaddressmap.h"

#include <functional>

class HexRunMerge
{
public:
    struct Stretch
    {
        qint64 begin; // addresses
        qint64 end;
        qint64 offset; // of its first byte among all bytes, as they came
        qint64 line;   // of the first record
    };
    // Of the later stretch, and the addresses that both have.
    using Overlap = std::function<void(const Stretch &later, qint64 begin, qint64 end)>;

    // The next bytes. They lengthen the last stretch where they continue it.
    void add(qint64 address, int length, qint64 line);
    qint64 byteCount() const { return m_bytes; }
    // All came in order.
    bool isUntouched() const { return !m_isTouched; }

    // Merges some thousand stretches; false when all are in order.
    bool step(const Overlap &overlap);
    const std::vector<Stretch> &stretches() const { return m_stretches; }

private:
    void beginPass();
    void beginPair();
    void mergeNext(const Overlap &overlap);

    std::vector<Stretch> m_stretches;
    std::vector<size_t> m_starts; // of the parts that are in order
    qint64 m_bytes = 0;

    // A pass merges each two neighboring parts.
    bool m_isTouched = false;
    bool m_isInPass = false;
    std::vector<Stretch> m_merged;
    std::vector<size_t> m_mergedStarts;
    size_t m_pair = 0; // the first of the two
    size_t m_earlier = 0;
    size_t m_earlierEnd = 0;
    size_t m_later = 0;
    size_t m_laterEnd = 0;
};
