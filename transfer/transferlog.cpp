#include "transferlog.h"

#include "ymodem.h"

namespace {

constexpr int kShownBytes = 16;

QString controlName(uchar byte)
{
    switch (byte) {
    case Ymodem::Soh:
        return QStringLiteral("SOH");
    case Ymodem::Stx:
        return QStringLiteral("STX");
    case Ymodem::Eot:
        return QStringLiteral("EOT");
    case Ymodem::Ack:
        return QStringLiteral("ACK");
    case Ymodem::Nak:
        return QStringLiteral("NAK");
    case Ymodem::Can:
        return QStringLiteral("CAN");
    case Ymodem::Request:
        return QStringLiteral("C");
    default:
        return QString();
    }
}

QString hex(const QByteArray &bytes)
{
    const QString shown = QString::fromLatin1(bytes.left(kShownBytes).toHex(' ').toUpper());
    return bytes.size() > kShownBytes ? shown + QStringLiteral(" …") : shown;
}

QString packetText(const QByteArray &packet)
{
    const QString name = controlName(static_cast<uchar>(packet.at(0)));
    if (packet.size() == 1)
        return name;
    if (packet.size() == 2) // a receiver's two answers
        return name + QLatin1Char(' ') + controlName(static_cast<uchar>(packet.at(1)));
    if (packet.at(0) == Ymodem::Can)
        return QStringLiteral("%1 × %2").arg(name).arg(packet.size());
    const int data = packet.size() - 5;
    return QStringLiteral("%1 序号%2 数据%3字节：%4")
        .arg(name)
        .arg(static_cast<uchar>(packet.at(1)))
        .arg(data)
        .arg(hex(packet.mid(3, data)));
}

} // namespace

void TransferLog::clear()
{
    m_start.clear();
    m_end.clear();
    m_omitted = 0;
}

void TransferLog::note(qint64 ms, const QString &text)
{
    add(ms, QStringLiteral("-- ") + text);
}

void TransferLog::sent(qint64 ms, const QByteArray &packet)
{
    add(ms, QStringLiteral("发送 ") + packetText(packet));
}

void TransferLog::received(qint64 ms, const QByteArray &bytes)
{
    const QString name = bytes.size() == 1 ? controlName(static_cast<uchar>(bytes.at(0))) : QString();
    add(ms, QStringLiteral("接收 ") + (name.isEmpty() ? hex(bytes) : name));
}

void TransferLog::add(qint64 ms, const QString &what)
{
    const QString line =
        QStringLiteral("[%1 s] %2").arg(static_cast<double>(ms) / 1000.0, 8, 'f', 3).arg(what);
    if (m_start.size() < keptAtStart) {
        m_start.append(line);
        return;
    }
    m_end.push_back(line);
    if (m_end.size() > static_cast<std::size_t>(keptAtEnd)) {
        m_end.pop_front();
        ++m_omitted;
    }
}

QString TransferLog::text() const
{
    QString text = m_start.join(QLatin1Char('\n'));
    if (m_omitted > 0)
        text += QStringLiteral("\n…… 省略%1行 ……").arg(m_omitted);
    for (const QString &line : m_end)
        text += QLatin1Char('\n') + line;
    return text;
}
