#include "heximage.h"

namespace {

QString hexadecimal(qint64 address)
{
    return QStringLiteral("0x%1").arg(
        QString::number(address, 16).toUpper().rightJustified(8, QLatin1Char('0')));
}

} // namespace

QString HexFault::text() const
{
    const QString where = QStringLiteral("第%1行：").arg(line);
    switch (kind) {
    case Kind::Checksum:
        return where + QStringLiteral("校验和错误，数据已载入，可能不正确");
    case Kind::Overlap:
        return QStringLiteral("第%1行起：地址%2起的%3字节重复，以后出现的为准")
            .arg(line)
            .arg(hexadecimal(address))
            .arg(length);
    case Kind::Beyond:
        return where + QStringLiteral("地址超出4 GB，超出的%1字节未载入").arg(length);
    case Kind::Unknown:
        return where + QStringLiteral("不是有效的记录，未载入");
    case Kind::Trailing:
        return where + QStringLiteral("记录之后有多余的字符，已忽略");
    case Kind::Truncated:
        return where + QStringLiteral("记录不完整，未载入");
    case Kind::Count:
        return where + QStringLiteral("记录数与文件中的计数不符，文件可能不完整");
    case Kind::AfterEnd:
        return where + QStringLiteral("结束记录之后还有内容，未载入");
    case Kind::NoEnd:
        return QStringLiteral("没有结束记录，文件可能不完整");
    }
    return QString();
}

void HexFaults::add(const HexFault &fault)
{
    ++m_count;
    m_losesOnSaving |= fault.kind != HexFault::Kind::NoEnd;
    if (m_first.size() < maxKept)
        m_first.append(fault);
}
