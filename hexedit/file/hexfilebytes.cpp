#include "hexfilebytes.h"

#include "filereason.h"
#include "hexreader.h"

namespace {
constexpr int kBlock = 1 << 18;
}

bool HexFileBytes::open(const QString &fileName)
{
    if (!HexReader::open(&m_file, fileName, &m_isOrdinary))
        return false;
    m_size = m_file.size();
    m_block.resize(kBlock);
    return true;
}

QString HexFileBytes::reason() const
{
    return m_isOrdinary ? FileReason::of(m_file) : QStringLiteral("不是普通文件");
}

const char *HexFileBytes::span(qint64 address, qint64 *inRow) const
{
    if (address < m_begin || address >= m_end) {
        m_begin = address / kBlock * kBlock;
        m_end = m_begin;
        const qint64 count = m_file.seek(m_begin) ? m_file.read(m_block.data(), kBlock) : -1;
        m_end = m_begin + qMax<qint64>(0, qMin(count, m_size - m_begin));
    }
    if (address >= m_end)
        return nullptr;
    *inRow = m_end - address;
    return m_block.constData() + (address - m_begin);
}
