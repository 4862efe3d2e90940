#include "linesearch.h"

#include "linestore.h"

#include <algorithm>
#include <cstring>

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

// Behind bytes[begin, end), which begin at a place.
LineSearch::Place behind(LineSearch::Place place, const QByteArray &bytes, int begin, int end)
{
    const char *at = bytes.constData() + begin;
    const char *last = bytes.constData() + end;
    while (const auto *newLine = static_cast<const char *>(memchr(at, '\n', size_t(last - at)))) {
        place = {place.line + 1, 0};
        at = newLine + 1;
    }
    place.column += QString::fromUtf8(at, static_cast<int>(last - at)).size();
    return place;
}

} // namespace

LineSearch::LineSearch(const LineStore &lines)
    : m_store(lines)
{
}

void LineSearch::start(const LineMatcher &matcher)
{
    m_matcher = matcher;
    m_needle = TextScan::Needle();
    if (!matcher.pattern().isExpression)
        m_needle = TextScan::Needle(matcher.pattern().text, matcher.pattern().caseSensitive);
    m_pieces.clear();
    m_next = Piece();
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
    return !hasMore() || isBefore(place, m_next.begin);
}

// What was searched and is no longer there is searched again.
void LineSearch::forgetChopped()
{
    m_chops = m_store.chops();
    const qint64 size = m_store.text().size();
    while (m_pieces.size() > 1 && m_pieces.last().offset > size)
        m_pieces.removeLast();
    if (m_next.offset < m_pieces.last().offset || m_next.offset > size)
        m_next = m_pieces.last();
    m_searched = m_next.offset;
    m_count = m_next.matches;
}

QByteArray LineSearch::read(const Piece &piece, qint64 maxBytes) const
{
    QByteArray bytes;
    while (bytes.size() < maxBytes) {
        const QByteArray part = m_store.text().read(piece.offset + bytes.size(), maxBytes - bytes.size());
        if (part.isEmpty())
            break;
        bytes += part;
    }
    return bytes;
}

bool LineSearch::step()
{
    if (!hasMore())
        return false;
    if (m_generation != m_store.generation())
        start(LineMatcher(m_matcher));
    if (m_chops != m_store.chops())
        forgetChopped();
    const Piece from = m_next;
    const qint64 room = m_pieces.last().offset + kPieceBytes - from.offset;
    QByteArray bytes = read(from, room);
    const bool isFull = bytes.size() == room;
    if (isFull && from.offset > m_pieces.last().offset && !bytes.contains('\n')) {
        m_pieces.append(from); // the line begins the next piece
        return hasMore();
    }
    const int end = isFull ? endOf(bytes) : bytes.lastIndexOf('\n') + 1;
    if (isFull)
        bytes.truncate(end);
    bool isKnown = true;
    const QVector<Match> matches = matchesIn(from, bytes, &isKnown);
    m_givenUp += isKnown ? 0 : 1;
    m_matching.truncate(from.begin.line + (from.begin.column > 0 ? 1 : 0));
    for (const Match &match : matches)
        m_matching.add(match.place.line);
    m_count = from.matches + matches.size();
    // Of a file that can't be read back, the rest is skipped.
    m_searched = bytes.isEmpty() ? m_store.text().size() : from.offset + bytes.size();
    m_next.offset = from.offset + end;
    m_next.begin = behind(from.begin, bytes, 0, end);
    const auto inNext = std::find_if(matches.begin(), matches.end(), [this](const Match &match) {
        return !isBefore(match.place, m_next.begin);
    });
    m_next.matches = from.matches + (inNext - matches.begin());
    if (isFull)
        m_pieces.append(m_next);
    return hasMore();
}

// Of complete lines, or of a part of one.
bool LineSearch::find(const Place &begin, const QByteArray &lines, QVector<Match> *matches) const
{
    const QString text = QString::fromUtf8(lines);
    QVector<LineMatcher::Range> ranges;
    const bool isKnown = m_matcher.find(text, &ranges);
    qint64 line = begin.line;
    int lineBegin = -begin.column;
    int at = 0;
    for (const LineMatcher::Range &range : qAsConst(ranges)) {
        const auto newLines = std::count(text.begin() + at, text.begin() + range.begin, QLatin1Char('\n'));
        if (newLines > 0)
            lineBegin = text.lastIndexOf(QLatin1Char('\n'), range.begin - text.size()) + 1;
        line += newLines;
        at = range.begin;
        matches->append({{line, range.begin - lineBegin}, range.length});
    }
    return isKnown;
}

// Of a text that is looked for, only the lines that have its bytes are decoded.
QVector<LineSearch::Match> LineSearch::matchesIn(const Piece &piece, const QByteArray &bytes,
                                                 bool *isKnown) const
{
    QVector<Match> matches;
    if (!m_needle.isUsable()) {
        const bool known = find(piece.begin, bytes, &matches);
        if (isKnown)
            *isKnown = known;
        return matches;
    }
    TextScan scan(m_needle, bytes);
    Place place = piece.begin;
    int end = 0;
    for (int at = scan.next(0); at >= 0; at = scan.next(end)) {
        const int begin = qMax(end, bytes.lastIndexOf('\n', at) + 1);
        place = behind(place, bytes, end, begin);
        const int newLine = bytes.indexOf('\n', at);
        end = newLine < 0 ? bytes.size() : newLine;
        find(place, QByteArray::fromRawData(bytes.constData() + begin, end - begin), &matches);
        place = behind(place, bytes, begin, end);
    }
    return matches;
}

QVector<LineSearch::Match> LineSearch::matchesIn(const Piece &piece) const
{
    QByteArray bytes = read(piece, kPieceBytes);
    if (bytes.size() == kPieceBytes)
        bytes.truncate(endOf(bytes));
    return matchesIn(piece, bytes);
}

std::optional<LineSearch::Match> LineSearch::at(qint64 index) const
{
    if (index < 0 || index >= m_count)
        return std::nullopt;
    const auto behind =
        std::upper_bound(m_pieces.begin(), m_pieces.end(), index,
                         [](qint64 number, const Piece &piece) { return number < piece.matches; });
    const Piece &piece = *(behind - 1);
    const QVector<Match> matches = matchesIn(piece);
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
    const QVector<Match> matches = matchesIn(piece);
    const auto found = std::find_if(matches.begin(), matches.end(),
                                    [&](const Match &match) { return !isBefore(match.place, place); });
    return qMin(m_count, piece.matches + qint64(found - matches.begin()));
}
