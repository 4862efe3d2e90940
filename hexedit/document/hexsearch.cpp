#include "hexsearch.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace {

constexpr qint64 kSlice = 1 << 18;

// Boyer and Moore's search with both of their rules: without the second one,
// long rows of equal bytes, which firmware is full of, cost the pattern's
// length for every byte.
template <class Iterator> std::function<qint64(Iterator, Iterator)> makeMatcher(Iterator begin, Iterator end)
{
    const std::boyer_moore_searcher<Iterator> searcher(begin, end);
    return [searcher](Iterator from, Iterator to) {
        const Iterator hit = std::search(from, to, searcher);
        return hit == to ? qint64(-1) : static_cast<qint64>(hit - from);
    };
}

} // namespace

HexSearch::HexSearch(const HexDocument &document, const QByteArray &pattern, qint64 from, Direction direction,
                     Around around)
    : m_document(document)
    , m_pattern(pattern)
    , m_direction(direction)
    , m_legs{}
{
    setLegs(from, around);
    if (m_legs[0].begin >= m_legs[0].end && m_legs[1].begin >= m_legs[1].end)
        return; // no place to look at
    const char *begin = m_pattern.constData();
    const char *end = begin + m_pattern.size();
    if (direction == Forward) {
        m_matcher = makeMatcher(begin, end);
    } else {
        using Reverse = std::reverse_iterator<const char *>;
        m_matcher = [match = makeMatcher(Reverse(end), Reverse(begin)),
                     length = m_pattern.size()](const char *first, const char *last) {
            const qint64 fromEnd = match(Reverse(last), Reverse(first));
            return fromEnd < 0 ? fromEnd : last - first - fromEnd - length;
        };
    }
}

void HexSearch::setLegs(qint64 from, Around around)
{
    // The last place where a find can begin, and one more.
    const qint64 places =
        m_pattern.isEmpty() ? 0 : std::max<qint64>(m_document.size() - m_pattern.size() + 1, 0);
    from = std::clamp<qint64>(from, 0, places);
    m_legs[0] = m_direction == Forward ? Leg{from, places} : Leg{0, from};
    m_legs[1] = m_direction == Forward ? Leg{0, from} : Leg{from, places};
    if (around == StopAtEnd)
        m_legs[1] = {0, 0};
}

HexSearch::State HexSearch::step()
{
    if (m_legs[m_leg].begin >= m_legs[m_leg].end && m_leg == 0)
        m_leg = 1;
    Leg &leg = m_legs[m_leg];
    if (leg.begin >= leg.end)
        return State::NotFound;
    const bool forward = m_direction == Forward;
    if (!forward || leg.begin < m_windowBegin || leg.begin >= m_windowEnd) {
        const qint64 places = std::min(kSlice, leg.end - leg.begin);
        m_windowBegin = forward ? leg.begin : leg.end - places;
        m_windowEnd = m_windowBegin + places;
        m_window = m_document.read(m_windowBegin, static_cast<int>(places) + m_pattern.size() - 1);
    }
    const qint64 from = forward ? leg.begin : m_windowBegin;
    const char *window = m_window.constData();
    const qint64 hit = m_matcher(window + (from - m_windowBegin), window + m_window.size());
    if (hit >= 0) {
        m_found = from + hit;
        return State::Found;
    }
    m_searched += m_windowEnd - from;
    if (forward)
        leg.begin = m_windowEnd;
    else
        leg.end = m_windowBegin;
    return State::Running;
}

int HexSearch::permille() const
{
    return static_cast<int>(m_searched * 1000 / std::max<qint64>(m_document.size(), 1));
}

void HexSearch::continueFrom(qint64 from)
{
    m_searched += from - m_legs[m_leg].begin;
    m_legs[m_leg].begin = from;
}
