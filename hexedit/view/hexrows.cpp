#include "hexrows.h"

#include <algorithm>

HexRows::HexRows(const HexContent &content, int length)
    : m_content(content)
    , m_length(length)
{
    reset();
}

void HexRows::setLength(int length)
{
    m_length = length;
    reset();
}

void HexRows::reset()
{
    const HexAddressMap &map = m_content.addresses();
    m_first.assign(1, 0);
    for (size_t i = 0; i + 1 < map.runCount(); ++i) {
        const HexRun run = map.run(i, m_content.size());
        const qint64 rows = (run.address + run.length - 1) / m_length - run.address / m_length + 1;
        m_first.push_back(m_first.back() + rows);
    }
}

qint64 HexRows::count() const
{
    return placeOf(m_content.size()).row + 1;
}

qint64 HexRows::endAddress() const
{
    return m_content.addresses().addressOf(m_content.size());
}

HexRows::Row HexRows::row(qint64 index) const
{
    const auto next = std::upper_bound(m_first.begin(), m_first.end(), index);
    const size_t number = static_cast<size_t>(next - m_first.begin()) - 1;
    const HexRun run = m_content.addresses().run(number, m_content.size());
    Row row;
    row.address = (run.address / m_length + index - m_first[number]) * m_length;
    row.begin = run.offset + std::max<qint64>(row.address - run.address, 0);
    row.end =
        std::clamp(run.offset + row.address + m_length - run.address, row.begin, run.offset + run.length);
    row.column = static_cast<int>(std::max<qint64>(run.address - row.address, 0));
    row.isBehindGap = number > 0 && index == m_first[number];
    return row;
}

HexRows::Place HexRows::placeOf(qint64 offset) const
{
    const HexAddressMap &map = m_content.addresses();
    const size_t number = map.runOf(offset);
    const HexRun run = map.run(number, m_content.size());
    const qint64 address = run.address + offset - run.offset;
    return {m_first[number] + address / m_length - run.address / m_length,
            static_cast<int>(address % m_length)};
}

qint64 HexRows::offsetAt(qint64 row, int column) const
{
    if (row < 0)
        return 0;
    if (row >= count())
        return m_content.size();
    const Row place = this->row(row);
    const qint64 offset = place.begin + std::max(column - place.column, 0);
    return std::min(offset, place.end == m_content.size() ? place.end : place.end - 1);
}

std::optional<qint64> HexRows::offsetBelow(const Place &place, int rows) const
{
    if (place.row + rows >= count())
        return std::nullopt;
    const Row below = row(place.row + rows);
    if (below.end == m_content.size() && below.begin + place.column - below.column > below.end)
        return std::nullopt;
    return offsetAt(place.row + rows, place.column);
}

qint64 HexRows::endOf(const Row &row, bool isSelecting) const
{
    const bool isFull = row.column + row.end - row.begin == m_length;
    return isSelecting || (row.end == m_content.size() && !isFull) ? row.end : row.end - 1;
}
