#include "linefilter.h"

namespace {

constexpr qint64 kLinesAtATime = 200LL * 1000;
// Passing over so many lines costs less than looking for the next one.
constexpr qint64 kMaxGap = 200;

} // namespace

LineFilter::LineFilter(const LineStore &store, const LineSearch &search)
    : m_store(store)
    , m_search(search)
{
}

void LineFilter::start(Options options)
{
    m_options = options;
    m_lines.clear();
    m_next = 0;
    m_shown = 0;
    m_contextEnd = 0;
}

// In the order of their numbers, and each once.
void LineFilter::show(qint64 line)
{
    if (line < m_shown)
        return;
    m_lines.add(line);
    m_shown = line + 1;
}

bool LineFilter::update()
{
    // Where all is searched, up to the line that still grows.
    const qint64 known = m_search.hasMore() ? m_search.nextLine() : m_store.completeLines();
    const qint64 end = qMin(known, m_next + kLinesAtATime);
    for (; m_next < end; ++m_next) {
        if (m_search.lines().contains(m_next) != m_options.isInverted) {
            for (qint64 line = qMax<qint64>(0, m_next - m_options.context); line <= m_next; ++line)
                show(line);
            m_contextEnd = m_next + m_options.context + 1;
        } else if (m_next < m_contextEnd) {
            show(m_next);
        }
    }
    return m_next < known;
}

// Lines that are near each other in the store are read together.
LineStore::Extract LineFilter::between(qint64 first, qint64 end, qint64 maxBytes) const
{
    LineStore::Extract extract;
    while (first < end && maxBytes > 0) {
        const qint64 begin = m_lines.at(first);
        qint64 last = begin;
        for (qint64 next = first + 1; next < end; ++next) {
            const qint64 line = m_lines.at(next);
            if (line - last > kMaxGap)
                break;
            last = line;
        }
        const QVector<LineStore::Line> found = m_store.lines(begin, static_cast<int>(last - begin + 1),
                                                             LineStore::maxExtractedLine, maxBytes, &m_lines);
        if (found.isEmpty())
            break;
        for (const LineStore::Line &one : found) {
            extract.text += one.text + QLatin1Char('\n');
            maxBytes -= one.text.size() + 1;
        }
        extract.count += found.size();
        first += found.size();
    }
    return extract;
}

LineStore::Extract LineFilter::extract(qint64 first, int maxLines, qint64 maxBytes) const
{
    LineStore::Extract extract = between(first, qMin(m_lines.count(), first + maxLines), maxBytes);
    extract.text.chop(1);
    extract.isEnd = extract.count == 0 || first + extract.count >= m_lines.count();
    return extract;
}

LineStore::Extract LineFilter::extractBefore(qint64 position, int maxLines) const
{
    return between(qMax<qint64>(0, position - maxLines), position, std::numeric_limits<qint64>::max());
}
