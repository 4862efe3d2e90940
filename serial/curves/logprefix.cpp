#include "logprefix.h"

#include "numbertext.h"

#include <QVector>

namespace {

constexpr int kMaxParts = 8;
constexpr int kMaxBrackets = 64; // characters
constexpr int kMaxTag = 32;
constexpr char kEscape = 0x1B;

// Reads a line from the left; every function returns whether it went on.
class Cursor
{
public:
    explicit Cursor(const QString &line)
        : m_line(line)
    {
    }

    int at() const { return m_at; }
    void setAt(int at) { m_at = at; }
    QChar peek(int offset = 0) const
    {
        return m_at + offset < m_line.size() ? m_line.at(m_at + offset) : QChar();
    }
    bool isNumberNext() const
    {
        const QChar *const text = m_line.constData();
        return NumberText::read(text + m_at, text + m_line.size()).length > 0;
    }

    bool skip(char expected)
    {
        const bool is = peek() == QLatin1Char(expected);
        m_at += is ? 1 : 0;
        return is;
    }
    bool skipSpaces()
    {
        const int before = m_at;
        while (peek().isSpace())
            ++m_at;
        return m_at > before;
    }
    bool skipDigits(int min, int max)
    {
        int count = 0;
        while (count < max && peek(count).unicode() >= '0' && peek(count).unicode() <= '9')
            ++count;
        m_at += count >= min ? count : 0;
        return count >= min;
    }
    QString word() const
    {
        int end = m_at;
        while (end < m_line.size() && end - m_at < kMaxTag && m_line.at(end).isLetter())
            ++end;
        return m_line.mid(m_at, end - m_at);
    }
    int indexOf(char end, int max) const
    {
        const int found = m_line.midRef(m_at, max).indexOf(QLatin1Char(end));
        return found < 0 ? -1 : m_at + found;
    }
    QStringRef to(int end) const { return m_line.midRef(m_at, end - m_at); }

private:
    const QString &m_line;
    int m_at = 0;
};

// "[wifi]", "<6>"; but not "[1, 2]" or "<a=1>".
bool skipBrackets(Cursor *cursor)
{
    const QChar open = cursor->peek();
    if (open != QLatin1Char('[') && open != QLatin1Char('<'))
        return false;
    const int end = cursor->indexOf(open == QLatin1Char('[') ? ']' : '>', kMaxBrackets);
    if (end < 0)
        return false;
    const QStringRef inside = cursor->to(end);
    const bool isList = inside.contains(QLatin1Char(',')) && !inside.contains(QLatin1Char(':'));
    if (isList || inside.contains(QLatin1Char('=')))
        return false;
    cursor->setAt(end + 1);
    return true;
}

bool skipDate(Cursor *cursor)
{
    const int begin = cursor->at();
    if (cursor->skipDigits(4, 4) && (cursor->skip('-') || cursor->skip('/')) && cursor->skipDigits(1, 2) &&
        (cursor->skip('-') || cursor->skip('/')) && cursor->skipDigits(1, 2)) {
        cursor->skip('T');
        return true;
    }
    cursor->setAt(begin);
    return false;
}

bool skipTime(Cursor *cursor)
{
    const int begin = cursor->at();
    if (cursor->skipDigits(1, 2) && cursor->skip(':') && cursor->skipDigits(2, 2)) {
        if (cursor->skip(':'))
            cursor->skipDigits(2, 2);
        const int fraction = cursor->at();
        if (!(cursor->skip('.') || cursor->skip(',') || cursor->skip(':')) || !cursor->skipDigits(1, 9))
            cursor->setAt(fraction);
        cursor->skip('Z');
        if (cursor->skipSpaces()) {
            if (cursor->peek() == QLatin1Char('-') && cursor->peek(1) == QLatin1Char('>'))
                cursor->setAt(cursor->at() + 2);
            return true;
        }
    }
    cursor->setAt(begin);
    return false;
}

// "I (1234) adc: "
bool skipTicks(Cursor *cursor)
{
    const int begin = cursor->at();
    const bool hasLevel = cursor->peek().isLetter() && cursor->peek(1).isSpace();
    if (hasLevel)
        cursor->setAt(begin + 2);
    if (!cursor->skip('(') || !cursor->skipDigits(1, 20) || !cursor->skip(')') || !cursor->skipSpaces()) {
        cursor->setAt(begin);
        return false;
    }
    const int tag = cursor->at();
    const int colon = cursor->indexOf(':', kMaxTag);
    if (hasLevel && colon > 0 && !cursor->to(colon).contains(QLatin1Char('='))) {
        cursor->setAt(colon + 1);
        if (!cursor->skipSpaces() || cursor->isNumberNext()) // it is a name, not a tag
            cursor->setAt(tag);
    }
    return true;
}

// A level that stands before a number is a name: "error: 0.5".
bool skipLevel(Cursor *cursor)
{
    static const QVector<QString> levels{QStringLiteral("info"),  QStringLiteral("debug"),
                                         QStringLiteral("warn"),  QStringLiteral("warning"),
                                         QStringLiteral("error"), QStringLiteral("verbose"),
                                         QStringLiteral("trace"), QStringLiteral("fatal")};
    const QString word = cursor->word();
    if (word.size() < 4 || !levels.contains(word.toLower()))
        return false;
    const int begin = cursor->at();
    cursor->setAt(begin + word.size());
    const bool hasColon = cursor->skip(':');
    if ((cursor->skipSpaces() || hasColon) && !cursor->isNumberNext() && cursor->peek() != QLatin1Char('=') &&
        cursor->peek() != QLatin1Char(':'))
        return true;
    cursor->setAt(begin);
    return false;
}

} // namespace

int LogPrefix::length(const QString &line)
{
    Cursor cursor(line);
    int end = 0;
    for (int part = 0; part < kMaxParts; ++part) {
        cursor.skipSpaces();
        end = cursor.at();
        if (!skipBrackets(&cursor) && !skipDate(&cursor) && !skipTime(&cursor) && !skipTicks(&cursor) &&
            !skipLevel(&cursor))
            break;
        const int behind = cursor.at();
        cursor.skipSpaces();
        if (cursor.at() == line.size()) // it was the text itself
            return end;
        cursor.setAt(behind);
        end = behind;
    }
    return end;
}

QString LogPrefix::withoutEscapes(const QString &line)
{
    if (!line.contains(QLatin1Char(kEscape)))
        return line;
    QString text;
    text.reserve(line.size());
    for (int i = 0; i < line.size(); ++i) {
        if (line.at(i) != QLatin1Char(kEscape)) {
            text += line.at(i);
            continue;
        }
        if (i + 1 < line.size() && line.at(i + 1) == QLatin1Char('[')) {
            i += 2; // up to the letter that ends it
            while (i < line.size() && (line.at(i).unicode() < 0x40 || line.at(i).unicode() > 0x7E))
                ++i;
        }
    }
    return text;
}

bool LogPrefix::isPacketHeader(const QString &line)
{
    return line.startsWith(QLatin1Char('[')) &&
           (line.endsWith(QLatin1String("] ASCII >")) ||
            line.endsWith(QLatin1String("] HEX >"), Qt::CaseInsensitive));
}

bool LogPrefix::isHexadecimal(const QString &line)
{
    const int size = line.size();
    if (size == 0 || size % 3 != 0)
        return false;
    for (int i = 0; i < size; ++i) {
        const ushort code = line.at(i).unicode();
        const bool isDigit = (code >= '0' && code <= '9') || (code >= 'A' && code <= 'F');
        if (i % 3 == 2 ? code != ' ' : !isDigit)
            return false;
    }
    return true;
}
