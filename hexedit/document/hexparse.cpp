#include "hexparse.h"

#include <limits>

namespace HexParse {

namespace {

int digitOf(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9')
        return code - '0';
    if (code >= 'a' && code <= 'f')
        return code - 'a' + 10;
    if (code >= 'A' && code <= 'F')
        return code - 'A' + 10;
    return -1;
}

bool isSeparator(QChar character)
{
    switch (character.unicode()) {
    case ' ':
    case ',':
    case ';':
    case ':':
    case '-':
    case '{':
    case '}':
    case '[':
    case ']':
    case '(':
    case ')':
        return true;
    default:
        return character.isSpace();
    }
}

} // namespace

std::optional<QByteArray> bytes(const QString &text)
{
    Reader reader(text);
    if (reader.read(std::numeric_limits<int>::max()) != Reader::State::Done)
        return std::nullopt;
    return reader.bytes();
}

Reader::Reader(const QString &text)
    : m_text(text)
    , m_bytes("") // not null
{
    m_bytes.reserve(text.size() / 2);
}

bool Reader::has(char first, char second) const
{
    return m_place + 1 < m_text.size() && m_text.at(m_place) == QLatin1Char(first) &&
           m_text.at(m_place + 1).toLower() == QLatin1Char(second);
}

bool Reader::endRow()
{
    m_inRow = false;
    if (m_digits == 1 && m_prefixed)
        m_bytes.append(static_cast<char>(m_last));
    else if (m_digits == 0 || m_digits % 2 != 0)
        return false;
    return true;
}

Reader::State Reader::read(int characters)
{
    const QChar *const text = m_text.constData();
    const int size = m_text.size();
    const int stop = size - m_place > characters ? m_place + characters : size;
    while (m_place < stop || (m_inRow && m_place == size)) {
        if (!m_inRow) {
            if (isSeparator(text[m_place])) {
                ++m_place;
                continue;
            }
            m_prefixed = has('0', 'x') || has('\\', 'x');
            m_place += m_prefixed ? 2 : 0;
            m_digits = 0;
            m_inRow = true;
        }
        for (; m_place < stop; ++m_place, ++m_digits) {
            const int digit = digitOf(text[m_place]);
            const bool whole = m_digits % 2 == 0;
            if (digit < 0 || (digit == 0 && whole && m_digits > 0 && has('0', 'x')))
                break;
            if (!whole)
                m_bytes.append(static_cast<char>(m_last * 16 + digit));
            m_last = digit;
        }
        if (m_place >= stop && stop < size)
            break; // the row may go on
        if (!endRow())
            return State::Invalid;
    }
    return m_place < size || m_inRow ? State::Running : State::Done;
}

std::optional<qint64> address(const QString &text, int base, qint64 current, qint64 size)
{
    QString number = text.trimmed();
    if (number.startsWith(QLatin1String("end"), Qt::CaseInsensitive)) { // relative to it
        number = number.mid(3).trimmed();
        current = size;
        if (number.isEmpty())
            return size;
        if (!number.startsWith(QLatin1Char('+')) && !number.startsWith(QLatin1Char('-')))
            return std::nullopt;
    }
    const bool forward = number.startsWith(QLatin1Char('+'));
    const bool backward = number.startsWith(QLatin1Char('-'));
    if (forward || backward)
        number = number.mid(1);
    if (number.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        number = number.mid(2);
        base = 16;
    } else if (number.endsWith(QLatin1Char('h'), Qt::CaseInsensitive)) {
        number.chop(1);
        base = 16;
    }
    if (number.isEmpty() || digitOf(number.at(0)) < 0)
        return std::nullopt; // no second sign, no blank
    bool isNumber = false;
    const qint64 value = number.toLongLong(&isNumber, base);
    if (!isNumber || value > size)
        return std::nullopt;
    const qint64 result = forward ? current + value : backward ? current - value : value;
    if (result < 0 || result > size)
        return std::nullopt;
    return result;
}

QString text(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

} // namespace HexParse
