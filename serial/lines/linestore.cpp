#include "linestore.h"

#include "lineset.h"
#include "spoolreader.h"

#include <algorithm>
#include <utility>

namespace {

// A block ends with the first line after so much.
constexpr qint64 kBlockBytes = 16LL * 1024;
constexpr qint64 kBlockLines = 1024;

// Not within a character.
QString textOf(QByteArray bytes, bool isCut)
{
    if (isCut) {
        int end = bytes.size();
        while (end > 0 && (bytes.at(end - 1) & 0xC0) == 0x80)
            --end;
        bytes.truncate(qMax(0, end - 1));
    }
    return QString::fromUtf8(bytes);
}

} // namespace

LineStore::LineStore(const QString &folder)
    : m_text(folder, QStringLiteral("text"))
    , m_times(folder, QStringLiteral("times"))
{
}

void LineStore::append(const QString &text, qint64 arrivalMs, Origin origin)
{
    if (text.isEmpty())
        return;
    if ((m_isLineOpen || m_isBegun) && origin != m_origin) {
        m_text.append("\n", 1);
        m_isLineOpen = false;
        m_isBegun = false;
        ++m_size;
    }
    const QByteArray bytes = text.toUtf8();
    const char *at = bytes.constData();
    const char *const end = at + bytes.size();
    while (at < end) {
        if (!m_isLineOpen && !std::exchange(m_isBegun, false))
            beginLine(arrivalMs, origin);
        const char *const lineEnd = std::find(at, end, '\n');
        m_isLineOpen = lineEnd == end;
        const char *const next = m_isLineOpen ? end : lineEnd + 1;
        m_text.append(at, next - at);
        m_size += m_isLineOpen ? 0 : 1;
        at = next;
    }
}

// The time of a line is what has passed since the line before, with the origin in
// the lowest bit: one byte for most.
void LineStore::beginLine(qint64 arrivalMs, Origin origin)
{
    if (m_blocks.isEmpty())
        m_lastMs = arrivalMs;
    if (m_blocks.isEmpty() || m_size - m_blocks.last().line >= kBlockLines ||
        m_text.size() - m_blocks.last().textAt >= kBlockBytes)
        m_blocks.append({m_size, m_text.size(), m_times.size(), m_lastMs});
    const qint64 passed = qMax<qint64>(0, arrivalMs - m_lastMs);
    m_lastMs += passed;
    m_origin = origin;
    QByteArray number;
    SpoolReader::appendNumber(quint64(passed) << 1 | quint64(origin), &number);
    m_times.append(number.constData(), number.size());
    m_lineAt = m_text.size();
}

const LineStore::Block &LineStore::blockOf(qint64 line) const
{
    const auto after =
        std::upper_bound(m_blocks.begin(), m_blocks.end(), line,
                         [](qint64 number, const Block &block) { return number < block.line; });
    return *(after - 1);
}

QVector<LineStore::Line> LineStore::lines(qint64 first, int count, int maxBytes, qint64 maxTotal,
                                          const LineSet *only) const
{
    QVector<Line> found;
    if (first < 0 || first >= size())
        return found;
    const Block *block = &blockOf(first);
    SpoolReader texts(m_text, block->textAt);
    SpoolReader times(m_times, block->timeAt);
    const qint64 end = qMin(size(), first + count);
    Line line;
    line.arrivalMs = block->ms;
    QByteArray bytes;
    for (qint64 number = block->line; number < end; ++number) {
        // A long line is the last one of its block.
        const bool isLastOfBlock = block + 1 != m_blocks.constEnd() && number + 1 == block[1].line;
        const bool isLast = isLastOfBlock || number + 1 == end;
        const bool isWanted = number >= first && (!only || only->contains(number));
        quint64 time = 0;
        if (!times.nextNumber(&time) || !texts.nextLine(isWanted ? maxBytes : 0, isLast, &bytes, &line.isCut))
            break;
        if (isLastOfBlock) {
            ++block;
            if (line.isCut)
                texts.seek(block->textAt);
        }
        line.arrivalMs += qint64(time >> 1);
        line.origin = Origin(time & 1);
        if (!isWanted)
            continue;
        line.text = textOf(bytes, line.isCut);
        found.append(line);
        maxTotal -= bytes.size();
        if (maxTotal <= 0)
            break;
    }
    return found;
}

QString LineStore::line(qint64 number) const
{
    const QVector<Line> found = lines(number, 1, maxExtractedLine);
    return found.isEmpty() ? QString() : found.first().text;
}

LineStore::Extract LineStore::extract(qint64 first, int maxLines, qint64 maxBytes) const
{
    Extract extract;
    const QVector<Line> found = lines(first, maxLines, maxExtractedLine, maxBytes);
    for (const Line &line : found)
        extract.text += (extract.count++ == 0 ? QString() : QStringLiteral("\n")) + line.text;
    // What can't be read back is left out.
    extract.isEnd = first + found.size() >= size() || found.isEmpty();
    if (extract.isEnd && !m_isLineOpen && first < m_size) {
        extract.text += QLatin1Char('\n');
        ++extract.count;
    }
    return extract;
}

// The first line of the blocks that hold about so many bytes before a line.
qint64 LineStore::firstWithin(qint64 line, qint64 bytes) const
{
    if (m_blocks.isEmpty())
        return 0;
    const qint64 end = blockOf(line).textAt;
    const auto block =
        std::lower_bound(m_blocks.begin(), m_blocks.end(), end - bytes,
                         [](const Block &earlier, qint64 offset) { return earlier.textAt < offset; });
    return block->line;
}

LineStore::Extract LineStore::extractBefore(qint64 line, int maxLines, qint64 maxBytes) const
{
    Extract extract;
    if (line <= 0 || m_blocks.isEmpty())
        return extract;
    const qint64 first = qMax(firstWithin(line - 1, maxBytes), line - maxLines);
    for (const Line &found : lines(first, int(line - first), maxExtractedLine)) {
        extract.text += found.text + QLatin1Char('\n');
        ++extract.count;
    }
    return extract;
}

QString LineStore::tail(int maxCharacters, int maxLines) const
{
    // A block may begin with a line that has lost all of its text.
    const qint64 last = qMax<qint64>(0, size() - 1);
    const qint64 first =
        qMax(firstWithin(last, qint64(maxCharacters) * 4), qMax<qint64>(0, m_size + 1 - maxLines));
    return extract(first, maxLines, std::numeric_limits<qint64>::max()).text.right(maxCharacters);
}

void LineStore::chop(const QString &end)
{
    if (!isComplete())
        return; // the end of the text is not there
    m_text.chop(end.toUtf8().size());
    ++m_chops;
    // A line without text is not counted, but keeps its time.
    m_isBegun = m_isLineOpen && m_text.size() == m_lineAt;
    m_isLineOpen = m_isLineOpen && !m_isBegun;
}

void LineStore::clear()
{
    m_text.clear();
    m_times.clear();
    m_blocks = {};
    m_size = 0;
    m_isLineOpen = false;
    m_isBegun = false;
    ++m_generation;
}
