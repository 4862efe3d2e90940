#include "hexsearch.h"

#include <algorithm>
#include <cstdlib>

HexSearch::HexSearch(const HexDocument &document, const HexPattern &pattern, qint64 from, Direction direction,
                     Around around)
    : m_document(document)
    , m_pattern(pattern)
    , m_direction(direction)
    , m_legs{}
{
    setLegs(from, around);
}

void HexSearch::setLegs(qint64 from, Around around)
{
    // The last place where a find can begin, and one more.
    const int minLength = std::max(m_pattern.fixedLength(), 1);
    const qint64 places = m_pattern.isEmpty() ? 0 : std::max<qint64>(m_document.size() - minLength + 1, 0);
    from = std::clamp<qint64>(from, 0, places);
    m_legs[0] = m_direction == Forward ? Leg{from, places} : Leg{0, from};
    m_legs[1] = m_direction == Forward ? Leg{0, from} : Leg{from, places};
    if (around == StopAtEnd)
        m_legs[1] = {0, 0};
}

void HexSearch::readWindow(const Leg &leg)
{
    const qint64 places = std::min(m_pattern.slice(), leg.end - leg.begin);
    m_windowFrom = m_direction == Forward ? leg.begin : leg.end - places;
    m_windowEnd = m_windowFrom + places;
    m_windowBegin = std::max<qint64>(0, m_windowFrom - m_pattern.context());
    m_window = m_document.read(m_windowBegin,
                               static_cast<int>(m_windowEnd - m_windowBegin) + m_pattern.maxLength() - 1);
}

HexSearch::State HexSearch::step()
{
    if (m_legs[m_leg].begin >= m_legs[m_leg].end && m_leg == 0)
        m_leg = 1;
    Leg &leg = m_legs[m_leg];
    if (leg.begin >= leg.end)
        return State::NotFound;
    const bool forward = m_direction == Forward;
    if (!forward || leg.begin < m_windowFrom || leg.begin >= m_windowEnd)
        readWindow(leg);
    const qint64 from = forward ? leg.begin : m_windowFrom;
    HexPattern::Match match;
    const auto find = forward ? &HexPattern::first : &HexPattern::last;
    if (!(m_pattern.*find)(m_window.constData(), m_window.size(), from - m_windowBegin,
                           m_windowEnd - m_windowBegin, &match))
        return State::TooHard;
    if (match.begin >= 0) {
        m_found = {m_windowBegin + match.begin, match.length};
        return State::Found;
    }
    m_searched += m_windowEnd - from;
    if (forward)
        leg.begin = m_windowEnd;
    else
        leg.end = m_windowFrom;
    return State::Running;
}

int HexSearch::permille() const
{
    return static_cast<int>(m_searched * 1000 / std::max<qint64>(m_document.size(), 1));
}

void HexSearch::continueFrom(qint64 from)
{
    Leg &leg = m_legs[m_leg];
    qint64 &bound = m_direction == Forward ? leg.begin : leg.end;
    m_searched += std::abs(from - bound);
    bound = from;
}
