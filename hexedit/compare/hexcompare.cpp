#include "hexcompare.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_map>

namespace {

constexpr qint64 kSlice = 1 << 20;
constexpr int kAnchor = 16; // equal bytes that show where both sides go on alike
constexpr int kFirstWindow = 256;

} // namespace

HexCompare::HexCompare(const HexDocument &left, const HexBytes &right, bool findsInsertions)
    : m_left(left)
    , m_right(right)
    , m_findsInsertions(findsInsertions)
{
}

int HexCompare::permille() const
{
    const qint64 all = std::max<qint64>(1, std::max(m_left.size(), m_right.size()));
    return static_cast<int>(std::min<qint64>(1000, std::max(m_leftAt, m_rightAt) * 1000 / all));
}

// From the present places on, at most `limit`.
qint64 HexCompare::equalBytes(qint64 limit)
{
    qint64 equal = 0;
    while (equal < limit) {
        qint64 leftRow = 0, rightRow = 0;
        const char *const left = m_left.span(m_leftAt + equal, &leftRow);
        const char *const right = m_right.span(m_rightAt + equal, &rightRow);
        m_hasFailed = !right;
        if (m_hasFailed)
            return equal;
        const qint64 count = std::min({leftRow, rightRow, limit - equal});
        if (std::memcmp(left, right, static_cast<size_t>(count)) != 0)
            return equal + (std::mismatch(left, left + count, right).first - left);
        equal += count;
    }
    return equal;
}

qint64 HexCompare::differentBytes(qint64 limit)
{
    qint64 different = 0;
    while (different < limit) {
        qint64 leftRow = 0, rightRow = 0;
        const char *const left = m_left.span(m_leftAt + different, &leftRow);
        const char *const right = m_right.span(m_rightAt + different, &rightRow);
        m_hasFailed = !right;
        if (m_hasFailed)
            return different;
        const qint64 count = std::min({leftRow, rightRow, limit - different});
        for (qint64 i = 0; i < count; ++i)
            if (left[i] == right[i])
                return different + i;
        different += count;
    }
    return different;
}

bool HexCompare::step()
{
    const qint64 limit = std::min({kSlice, m_left.size() - m_leftAt, m_right.size() - m_rightAt});
    if (limit <= 0) { // one side may have more
        addDifference(m_left.size() - m_leftAt, m_right.size() - m_rightAt);
        return false;
    }
    const qint64 equal = equalBytes(limit);
    m_leftAt += equal;
    m_rightAt += equal;
    m_row += equal;
    if (m_hasFailed || equal == limit)
        return !m_hasFailed;
    if (m_findsInsertions) {
        const Shift shift = findShift();
        addDifference(shift.left, shift.right);
    } else {
        const qint64 different = differentBytes(limit - equal);
        addDifference(different, different);
    }
    return !isCut() && !m_hasFailed;
}

// Goes on behind them. Differences that touch are one.
void HexCompare::addDifference(qint64 left, qint64 right)
{
    const qint64 length = std::max(left, right);
    if (length == 0)
        return;
    Difference *const last = m_differences.empty() ? nullptr : &m_differences.back();
    if (last && last->row + last->length() == m_row && last->leftLength == last->rightLength &&
        left == right) {
        last->leftLength += left;
        last->rightLength += right;
    } else {
        m_differences.push_back({m_row, m_leftAt, left, m_rightAt, right});
    }
    m_leftAt += left;
    m_rightAt += right;
    m_row += length;
}

// How far both sides go on until they are alike again. Looks near first: most differences
// are short.
HexCompare::Shift HexCompare::findShift() const
{
    for (int window = kFirstWindow; window <= maxShift; window *= 4) {
        const Shift shift = findShift(window);
        if (shift.left >= 0)
            return shift;
    }
    const qint64 both = std::min({qint64(maxShift), m_left.size() - m_leftAt, m_right.size() - m_rightAt});
    return {both, both}; // or to the end of the shorter side
}

// The nearest place at which as many bytes are equal as show that it is no chance: without
// a shift, or with the smallest one. -1: none.
HexCompare::Shift HexCompare::findShift(int window) const
{
    const QByteArray left = m_left.read(m_leftAt, window + kAnchor);
    const QByteArray right = m_right.read(m_rightAt, window + kAnchor);
    const int both = std::min(left.size(), right.size());
    // Changed in place: a few equal bytes are enough.
    int unshifted = both;
    for (int at = 0, equal = 0; at < both; ++at) {
        equal = left.at(at) == right.at(at) ? equal + 1 : 0;
        if (equal == kAnchor / 2) {
            unshifted = at + 1 - equal;
            break;
        }
    }
    const bool bothEnd = m_left.size() - m_leftAt == m_right.size() - m_rightAt && both < window + kAnchor;
    Shift best{-1, -1};
    qint64 bestCost = unshifted < both || bothEnd ? 2 * qint64(unshifted) : 2 * qint64(window) + 1;
    if (unshifted < both || bothEnd)
        best = {unshifted, unshifted};
    std::unordered_map<std::string_view, int> places; // the first one of each anchor
    for (int at = 0; at + kAnchor <= right.size(); ++at)
        places.emplace(std::string_view(right.constData() + at, kAnchor), at);
    for (int at = 0; at + kAnchor <= left.size() && at < bestCost; ++at) {
        const auto found = places.find(std::string_view(left.constData() + at, kAnchor));
        if (found == places.end() || at + found->second >= bestCost)
            continue;
        best = {at, found->second};
        bestCost = at + found->second;
    }
    // The ends may be alike although no anchor fits behind the difference.
    if (best.left < 0 && m_left.size() - m_leftAt == left.size() &&
        m_right.size() - m_rightAt == right.size()) {
        int same = 0;
        while (same < both - 1 && left.at(left.size() - 1 - same) == right.at(right.size() - 1 - same))
            ++same;
        best = {left.size() - same, right.size() - same};
    }
    // Where the anchor begins earlier than it was found: only as many bytes as differ.
    while (best.left > 0 && best.right > 0 && best.left != best.right &&
           left.at(int(best.left) - 1) == right.at(int(best.right) - 1)) {
        --best.left;
        --best.right;
    }
    return best;
}
