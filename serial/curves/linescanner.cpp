#include "linescanner.h"

namespace {

bool isAssignment(QChar character)
{
    const ushort code = character.unicode();
    return code == '=' || code == ':' || code == 0xFF1A;
}

} // namespace

bool LineScanner::isNameStart(QChar character)
{
    return character.isLetter() || character == QLatin1Char('_') || character == QLatin1Char('$');
}

bool LineScanner::isNamePart(QChar character)
{
    const ushort code = character.unicode();
    return character.isLetterOrNumber() || code == '_' || code == '.' || code == '-' || code == '/' ||
           code == '%' || code == '$' || code == '#' || code == 0xB0;
}

bool LineScanner::isIgnored(QChar character)
{
    switch (character.unicode()) {
    case '"':
    case '\'':
    case '(':
    case ')':
    case '[':
    case ']':
    case '{':
    case '}':
        return true;
    default:
        return character.isSpace();
    }
}

bool LineScanner::isComma(QChar character)
{
    const ushort code = character.unicode();
    return code == ',' || code == ';' || code == '|' || code == 0xFF0C || code == 0xFF1B;
}

LineScanner::Kind LineScanner::next()
{
    while (m_at < m_text.size() && isIgnored(m_text.at(m_at)))
        ++m_at;
    m_begin = m_at;
    if (m_at == m_text.size())
        return End;
    const QChar first = m_text.at(m_at);
    if (isAssignment(first)) {
        while (m_at < m_text.size() && isAssignment(m_text.at(m_at)))
            ++m_at;
        return Assignment;
    }
    const QChar *const text = m_text.constData();
    m_number = NumberText::read(text + m_at, text + m_text.size());
    if (m_number.length > 0) {
        m_at += m_number.length;
        return Number;
    }
    if (isNameStart(first)) {
        skipName();
        return Word;
    }
    if (first.isDigit())
        return scanMixed();
    ++m_at;
    return Other;
}

// "imu.x", "Temp(C)", "acc[0]"
void LineScanner::skipName()
{
    while (m_at < m_text.size() && isNamePart(m_text.at(m_at)))
        ++m_at;
    if (m_at == m_text.size() || (m_text.at(m_at) != QLatin1Char('(') && m_text.at(m_at) != QLatin1Char('[')))
        return;
    const bool isRound = m_text.at(m_at) == QLatin1Char('(');
    const int close = m_text.midRef(m_at, maxName).indexOf(isRound ? QLatin1Char(')') : QLatin1Char(']'));
    const int behind = m_at + close + 1;
    // Otherwise the brackets are an array's or enclose something else.
    if (close > 1 && behind < m_text.size() && isAssignment(m_text.at(behind)))
        m_at = behind;
}

// "3v3" and "5V" are names, "192.168.1.1", "12:30" and "2026-01-31" are nothing.
LineScanner::Kind LineScanner::scanMixed()
{
    bool hasLetter = false;
    bool hasTime = false;
    while (m_at < m_text.size() && !NumberText::isDelimiter(m_text.at(m_at)) &&
           m_text.at(m_at) != QLatin1Char('=')) {
        const QChar character = m_text.at(m_at);
        if (isAssignment(character)) {
            if (m_at + 1 == m_text.size() || !m_text.at(m_at + 1).isDigit() || hasLetter)
                break;
            hasTime = true;
        }
        hasLetter = hasLetter || character.isLetter();
        ++m_at;
    }
    return hasLetter && !hasTime ? Word : Other;
}
