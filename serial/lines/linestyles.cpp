#include "linestyles.h"

#include "spoolreader.h"

#include <algorithm>
#include <array>

namespace {

constexpr qint64 kBlockBytes = 8LL * 1024; // read at a time
constexpr int kMaxRuns = 4096;             // of a line; its further characters are plain

} // namespace

LineStyles::LineStyles(const QString &folder)
    : m_stored(folder, QStringLiteral("styles"))
{
}

void LineStyles::add(qint64 line, const StyledRun &run)
{
    if (line != m_last) {
        store();
        m_last = line;
    }
    if (!m_open.isEmpty() && m_open.last().style == run.style &&
        m_open.last().begin + m_open.last().length == run.begin)
        m_open.last().length += run.length;
    else if (m_open.size() < kMaxRuns)
        m_open.append(run);
}

void LineStyles::chop(qint64 line, int length)
{
    if (line != m_last)
        return;
    while (!m_open.isEmpty() && m_open.last().begin >= length)
        m_open.removeLast();
    if (!m_open.isEmpty())
        m_open.last().length = qMin(m_open.last().length, length - m_open.last().begin);
}

// Of a line: what its number is above that of the line before, its runs' bytes,
// and the runs.
void LineStyles::store()
{
    if (m_open.isEmpty())
        return;
    if (m_blocks.isEmpty() || m_stored.size() - m_blocks.last().at >= kBlockBytes) {
        m_blocks.append({m_last, m_stored.size()});
        m_lastStored = m_last;
    }
    QByteArray runs;
    for (const StyledRun &run : qAsConst(m_open))
        for (const int number :
             {run.begin, run.length, run.style.text + 1, run.style.ground + 1, run.style.flags()})
            SpoolReader::appendNumber(quint64(number), &runs);
    QByteArray bytes;
    SpoolReader::appendNumber(quint64(m_last - m_lastStored), &bytes);
    SpoolReader::appendNumber(quint64(m_open.size()), &bytes);
    bytes += runs;
    m_stored.append(bytes.constData(), bytes.size());
    if (m_readBlock == m_blocks.size() - 1)
        m_readBlock = -1;
    m_lastStored = m_last;
    m_open.clear();
}

void LineStyles::read(int block) const
{
    m_read.clear();
    m_readBlock = block;
    const qint64 end = block + 1 < m_blocks.size() ? m_blocks.at(block + 1).at : m_stored.size();
    qint64 line = m_blocks.at(block).line;
    SpoolReader reader(m_stored, m_blocks.at(block).at);
    while (reader.at() < end) {
        quint64 passed = 0;
        quint64 count = 0;
        if (!reader.nextNumber(&passed) || !reader.nextNumber(&count) || count > kMaxRuns)
            return;
        line += qint64(passed);
        Runs &runs = m_read[line];
        for (quint64 i = 0; i < count; ++i) {
            std::array<quint64, 5> numbers{};
            for (quint64 &number : numbers)
                if (!reader.nextNumber(&number))
                    return;
            StyledRun run{int(numbers[0]), int(numbers[1]), {}};
            run.style.text = int(numbers[2]) - 1;
            run.style.ground = int(numbers[3]) - 1;
            run.style.setFlags(int(numbers[4]));
            runs.append(run);
        }
    }
}

LineStyles::Runs LineStyles::of(qint64 line) const
{
    if (line == m_last)
        return m_open;
    if (line > m_last || m_blocks.isEmpty() || line < m_blocks.first().line)
        return {};
    const auto after =
        std::upper_bound(m_blocks.begin(), m_blocks.end(), line,
                         [](qint64 number, const Block &block) { return number < block.line; });
    const int block = int(after - m_blocks.begin()) - 1;
    if (block != m_readBlock)
        read(block);
    return m_read.value(line);
}

void LineStyles::clear()
{
    m_stored.clear();
    m_blocks.clear();
    m_open.clear();
    m_read.clear();
    m_last = -1;
    m_readBlock = -1;
}
