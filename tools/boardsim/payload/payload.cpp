#include "payload.h"

#include <QTextCodec>

namespace Boardsim {

bool encodingFromName(const QString &name, Encoding *encoding)
{
    if (name == QLatin1String("utf8"))
        *encoding = Encoding::Utf8;
    else if (name == QLatin1String("gb18030"))
        *encoding = Encoding::Gb18030;
    else if (name == QLatin1String("ascii"))
        *encoding = Encoding::Ascii;
    else if (name == QLatin1String("binary"))
        *encoding = Encoding::Binary;
    else
        return false;
    return true;
}

QByteArray encoded(const QString &text, Encoding encoding)
{
    if (encoding == Encoding::Gb18030)
        return QTextCodec::codecForName("GB18030")->fromUnicode(text);
    return text.toUtf8();
}

quint32 xorshift32(quint32 state)
{
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

quint32 scrambled(quint32 seed, quint32 index)
{
    const quint32 start = seed ^ ((index + 1) * 2654435761U);
    return xorshift32(xorshift32(start ? start : 1));
}

Payload::Payload(Encoding encoding, quint32 seed)
    : m_encoding(encoding)
    , m_seed(seed)
    , m_state(seed ? seed : 1)
{
}

QString Payload::line(quint32 number, quint32 seed, Encoding encoding)
{
    static const QString words[] = {QStringLiteral("温度"), QStringLiteral("电压"), QStringLiteral("转速"),
                                    QStringLiteral("speed")};
    static const QString asciiWords[] = {QStringLiteral("degree"), QStringLiteral("supply"),
                                         QStringLiteral("actual"), QStringLiteral("speed")};
    const quint32 value = scrambled(seed, number);
    return QStringLiteral("%1 %2 %3\r\n")
        .arg(number, 8, 10, QLatin1Char('0'))
        .arg(encoding == Encoding::Ascii ? asciiWords[value % 4] : words[value % 4])
        .arg(value, 8, 16, QLatin1Char('0'));
}

QByteArray Payload::take(int count)
{
    if (m_encoding == Encoding::Binary) {
        QByteArray bytes(count, Qt::Uninitialized);
        for (char &byte : bytes) {
            m_state = xorshift32(m_state);
            byte = char(m_state >> 24);
        }
        return bytes;
    }
    while (m_rest.size() < count)
        m_rest += encoded(line(m_nextLine++, m_seed, m_encoding), m_encoding);
    const QByteArray bytes = m_rest.left(count);
    m_rest.remove(0, count);
    return bytes;
}

} // namespace Boardsim
