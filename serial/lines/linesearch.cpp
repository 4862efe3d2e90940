#include "linesearch.h"

#include "linestore.h"

#include <algorithm>

namespace {

constexpr qint64 kPieceBytes = 256LL * 1024;

bool isBefore(const LineSearch::Place &a, const LineSearch::Place &b)
{
    return a.line < b.line || (a.line == b.line && a.column < b.column);
}

// Where a piece ends: behind its last line end, or, in a longer line, behind its
// last character.
int endOf(const QByteArray &bytes)
{
    const int newLine = bytes.lastIndexOf('\n');
    if (newLine >= 0)
        return newLine + 1;
    int end = bytes.size() - 1;
    while (end > 0 && (bytes.at(end) & 0xC0) == 0x80)
        --end;
    return end > 0 ? end : bytes.size();
}

} // namespace

LineSearch::LineSearch(const LineStore &lines)
    : m_store(lines)
{
}

void LineSearch::start(const LineMatcher &matcher)
{
    m_matcher = matcher;
    m_pieces.clear();
    m_matching.clear();
    m_count = 0;
    m_searched = 0;
    m_givenUp = 0;
    m_generation = m_store.generation();
    m_chops = m_store.chops();
    if (!matcher.isEmpty() && matcher.fault().isEmpty())
        m_pieces.append(Piece());
}

bool LineSearch::hasMore() const
{
    return !m_pieces.isEmpty() && !hasGivenUp() &&
           (m_generation != m_store.generation() || m_chops != m_store.chops() ||
            m_searched < m_store.text().size());
}

bool LineSearch::hasPassed(const Place &place) const
{
    return !hasMore() || isBefore(place, m_pieces.last().begin);
}

// The last piece is searched again, with those before it that lost some of their text.
void LineSearch::forgetChopped()
{
    m_chops = m_store.chops();
    while (m_pieces.size() > 1 && m_pieces.last().offset > m_store.text().size())
        m_pieces.removeLast();
    m_searched = m_pieces.last().offset;
    m_count = m_pieces.last().matches;
}

LineSearch::Content LineSearch::read(const Piece &piece) const
{
    QByteArray bytes;
    while (bytes.size() < kPieceBytes) {
        const QByteArray part = m_store.text().read(piece.offset + bytes.size(), kPieceBytes - bytes.size());
        if (part.isEmpty())
            break;
        bytes += part;
    }
    Content content;
    content.isOpen = bytes.size() < kPieceBytes;
    if (!content.isOpen)
        bytes.truncate(endOf(bytes));
    content.end = piece.offset + bytes.size();
    content.text = QString::fromUtf8(bytes);
    const int lineEnd = content.text.lastIndexOf(QLatin1Char('\n'));
    content.endPlace.line = piece.begin.line + std::count(bytes.begin(), bytes.end(), '\n');
    content.endPlace.column = content.text.size() - lineEnd - 1 + (lineEnd < 0 ? piece.begin.column : 0);
    return content;
}

bool LineSearch::step()
{
    if (!hasMore())
        return false;
    if (m_generation != m_store.generation())
        start(LineMatcher(m_matcher));
    if (m_chops != m_store.chops())
        forgetChopped();
    const Piece piece = m_pieces.last();
    const Content content = read(piece);
    bool isKnown = true;
    const QVector<Match> matches = matchesIn(piece, content.text, &isKnown);
    m_givenUp += isKnown ? 0 : 1;
    m_matching.truncate(piece.begin.line + (piece.begin.column > 0 ? 1 : 0));
    for (const Match &match : matches)
        m_matching.add(match.place.line);
    m_count = piece.matches + matches.size();
    // Of a file that can't be read back, the rest is skipped.
    m_searched = content.text.isEmpty() ? m_store.text().size() : content.end;
    if (!content.isOpen)
        m_pieces.append({content.end, content.endPlace, m_count});
    return hasMore();
}

QVector<LineSearch::Match> LineSearch::matchesIn(const Piece &piece, const QString &text, bool *isKnown) const
{
    QVector<LineMatcher::Range> ranges;
    const bool known = m_matcher.find(text, &ranges);
    if (isKnown)
        *isKnown = known;
    QVector<Match> matches;
    matches.reserve(ranges.size());
    qint64 line = piece.begin.line;
    int lineBegin = -piece.begin.column;
    int at = 0;
    for (const LineMatcher::Range &range : qAsConst(ranges)) {
        const auto begin = text.begin() + at;
        const auto end = text.begin() + range.begin;
        const auto newLines = std::count(begin, end, QLatin1Char('\n'));
        if (newLines > 0)
            lineBegin = text.lastIndexOf(QLatin1Char('\n'), range.begin - text.size()) + 1;
        line += newLines;
        at = range.begin;
        matches.append({{line, range.begin - lineBegin}, range.length});
    }
    return matches;
}

std::optional<LineSearch::Match> LineSearch::at(qint64 index) const
{
    if (index < 0 || index >= m_count)
        return std::nullopt;
    const auto behind =
        std::upper_bound(m_pieces.begin(), m_pieces.end(), index,
                         [](qint64 number, const Piece &piece) { return number < piece.matches; });
    const Piece &piece = *(behind - 1);
    const QVector<Match> matches = matchesIn(piece, read(piece).text);
    const qint64 inPiece = index - piece.matches;
    return inPiece < matches.size() ? std::optional<Match>(matches.at(int(inPiece))) : std::nullopt;
}

qint64 LineSearch::indexFrom(const Place &place) const
{
    if (m_count == 0)
        return 0;
    const auto behind = std::upper_bound(
        m_pieces.begin(), m_pieces.end(), place,
        [](const Place &wanted, const Piece &piece) { return isBefore(wanted, piece.begin); });
    const Piece &piece = *(behind - 1);
    const QVector<Match> matches = matchesIn(piece, read(piece).text);
    const auto found = std::find_if(matches.begin(), matches.end(),
                                    [&](const Match &match) { return !isBefore(match.place, place); });
    return qMin(m_count, piece.matches + qint64(found - matches.begin()));
}
