#include "spoolreader.h"

namespace {

constexpr qint64 kReadBytes = 64LL * 1024;

} // namespace

SpoolReader::SpoolReader(const ByteSpool &spool, qint64 at)
    : m_spool(spool)
    , m_at(at)
{
}

void SpoolReader::appendNumber(quint64 number, QByteArray *bytes)
{
    for (; number >= 0x80; number >>= 7)
        bytes->append(char(0x80 | (number & 0x7F)));
    bytes->append(char(number));
}

void SpoolReader::seek(qint64 at)
{
    const qint64 begin = m_at - m_piece.size();
    if (at < begin || at > m_at) {
        m_piece.clear();
        m_at = at;
    }
    m_used = static_cast<int>(at - (m_at - m_piece.size()));
}

bool SpoolReader::fill()
{
    m_piece = m_spool.read(m_at, kReadBytes);
    m_at += m_piece.size();
    m_used = 0;
    return !m_piece.isEmpty();
}

bool SpoolReader::next(char *byte)
{
    if (m_used == m_piece.size() && !fill())
        return false;
    *byte = m_piece.at(m_used++);
    return true;
}

bool SpoolReader::nextNumber(quint64 *number)
{
    *number = 0;
    char byte = 0;
    for (int shift = 0; shift < 64; shift += 7) {
        if (!next(&byte))
            return false;
        *number |= quint64(byte & 0x7F) << shift;
        if ((byte & 0x80) == 0)
            return true;
    }
    return false;
}

bool SpoolReader::nextBytes(qint64 count, QByteArray *bytes)
{
    bytes->clear();
    while (bytes->size() < count) {
        if (m_used == m_piece.size() && !fill())
            return false;
        const int part = int(qMin<qint64>(count - bytes->size(), m_piece.size() - m_used));
        bytes->append(m_piece.constData() + m_used, part);
        m_used += part;
    }
    return true;
}

bool SpoolReader::nextLine(int maxBytes, bool isLast, QByteArray *line, bool *isCut)
{
    line->clear();
    *isCut = false;
    if (m_used == m_piece.size() && !fill())
        return false;
    for (;;) {
        const int end = m_piece.indexOf('\n', m_used);
        const int count = (end < 0 ? m_piece.size() : end) - m_used;
        const int kept = qMin(count, maxBytes - line->size());
        line->append(m_piece.constData() + m_used, kept);
        *isCut = *isCut || kept < count;
        m_used += end < 0 ? count : count + 1;
        if (end >= 0 || (isLast && *isCut) || !fill())
            return true;
    }
}
