#include "hexrunmerge.h"

#include <algorithm>

namespace {
constexpr int kSlice = 1 << 14; // stretches
}

void HexRunMerge::add(qint64 address, int length, qint64 line)
{
    if (length == 0)
        return;
    const qint64 offset = m_bytes;
    m_bytes += length;
    if (!m_stretches.empty() && m_stretches.back().end == address) {
        m_stretches.back().end += length;
        return;
    }
    if (m_stretches.empty() || address < m_stretches.back().end)
        m_starts.push_back(m_stretches.size());
    m_stretches.push_back({address, address + length, offset, line});
}

bool HexRunMerge::step(const Overlap &overlap)
{
    for (int i = 0; i < kSlice; ++i) {
        if (!m_isInPass) {
            if (m_starts.size() < 2)
                return false;
            beginPass();
        }
        mergeNext(overlap);
    }
    return true;
}

void HexRunMerge::beginPass()
{
    m_isInPass = m_isTouched = true;
    m_merged.clear();
    m_mergedStarts.clear();
    m_pair = 0;
    beginPair();
}

void HexRunMerge::beginPair()
{
    const auto startOf = [this](size_t part) {
        return part < m_starts.size() ? m_starts[part] : m_stretches.size();
    };
    m_mergedStarts.push_back(m_merged.size());
    m_earlier = startOf(m_pair);
    m_earlierEnd = m_later = startOf(m_pair + 1);
    m_laterEnd = startOf(m_pair + 2);
}

// Appends the next stretch of the two parts. What is left of the earlier one
// is cut where it stands.
void HexRunMerge::mergeNext(const Overlap &overlap)
{
    const bool hasEarlier = m_earlier < m_earlierEnd;
    const bool hasLater = m_later < m_laterEnd;
    if (!hasEarlier && !hasLater) {
        m_pair += 2;
        if (m_pair < m_starts.size()) {
            beginPair();
            return;
        }
        m_stretches.swap(m_merged);
        m_starts.swap(m_mergedStarts);
        m_isInPass = false;
        return;
    }
    if (!hasLater || (hasEarlier && m_stretches[m_earlier].end <= m_stretches[m_later].begin)) {
        m_merged.push_back(m_stretches[m_earlier++]);
        return;
    }
    const Stretch &later = m_stretches[m_later];
    if (!hasEarlier || later.end <= m_stretches[m_earlier].begin) {
        m_merged.push_back(later);
        ++m_later;
        return;
    }
    Stretch &earlier = m_stretches[m_earlier]; // they overlap
    if (earlier.begin < later.begin) {
        Stretch kept = earlier;
        kept.end = later.begin;
        m_merged.push_back(kept);
    }
    const qint64 begin = std::max(earlier.begin, later.begin);
    const qint64 end = std::min(earlier.end, later.end);
    overlap(later, begin, end);
    if (earlier.end <= later.end) {
        ++m_earlier;
    } else {
        earlier.offset += end - earlier.begin;
        earlier.begin = end;
    }
}
