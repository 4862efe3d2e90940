#include "terminaltext.h"

#include <utility>

namespace {

constexpr uint kEscape = 0x1B;
constexpr uint kBell = 0x07;
constexpr uint kDelete = 0x7F;
constexpr uint kSpace = 0x20;
constexpr int kSymbolColor = 6; // cyan

// Not all faces have pictures of the control characters.
const char *const kNames[] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL", "BS",  "TAB", "LF",
                              "VT",  "FF",  "CR",  "SO",  "SI",  "DLE", "DC1", "DC2", "DC3", "DC4", "NAK",
                              "SYN", "ETB", "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};

// Longer ones are shown as they stand.
constexpr int kMaxSequence = 64;
constexpr int kMaxString = 1024;
// Cells of a line that may be overwritten.
constexpr int kMaxLine = 4096;

bool isLineEnd(uint character)
{
    return character == '\n' || character == 0x2029 || character == 0xFDD0 || character == 0xFDD1;
}

bool isSpecial(uint character)
{
    return (character < kSpace && character != '\t') || character == kDelete || isLineEnd(character);
}

void append(uint character, QString *text)
{
    if (QChar::requiresSurrogates(character)) {
        *text += QChar(QChar::highSurrogate(character));
        *text += QChar(QChar::lowSurrogate(character));
    } else {
        *text += QChar(ushort(character));
    }
}

} // namespace

TerminalText::Output TerminalText::feed(const QString &text, Options options)
{
    m_output = {};
    for (int i = 0; i < text.size(); ++i) {
        i += options.symbols ? 0 : feedPlainLine(text, i);
        if (i >= text.size())
            break;
        uint character = text.at(i).unicode();
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            character = QChar::surrogateToUcs4(text.at(i), text.at(i + 1));
        i += QChar::requiresSurrogates(character) ? 1 : 0;
        feedCharacter(character, options);
    }
    show();
    return std::exchange(m_output, {});
}

// The rest of a line that has nothing to be interpreted, without a cell for each
// of its characters. Returns how many characters that are, with its end.
int TerminalText::feedPlainLine(const QString &text, int from)
{
    if (m_state != State::Text || m_afterReturn || m_column != m_line.size())
        return 0;
    int end = from;
    while (end < text.size() && !isSpecial(text.at(end).unicode()))
        ++end;
    const int next = end + (end < text.size() && text.at(end) == QLatin1Char('\r') ? 1 : 0);
    if (next >= text.size() || text.at(next) != QLatin1Char('\n'))
        return 0;
    show();
    if (!m_style.isPlain() && end > from)
        m_output.runs.append({m_output.text.size(), end - from, m_style});
    m_output.text += text.midRef(from, end - from);
    m_output.text += QLatin1Char('\n');
    breakLine();
    return next + 1 - from;
}

void TerminalText::feedCharacter(uint character, Options options)
{
    switch (m_state) {
    case State::Text:
        return feedText(character, options);
    case State::Escape:
        return feedEscape(character, options);
    case State::Sequence:
        return feedSequence(character, options);
    case State::String:
    case State::StringEscape:
        return feedString(character, options);
    }
}

void TerminalText::feedText(uint character, Options options)
{
    // A line feed behind a carriage return is part of the same line end.
    if (std::exchange(m_afterReturn, false)) {
        if (character == '\n' && !options.symbols)
            return;
        if (character != '\n' && options.symbols)
            endLine();
    }
    if (options.sequences && character == kEscape)
        m_state = State::Escape;
    else if (isSpecial(character))
        control(character, options);
    else
        put(character);
}

void TerminalText::control(uint character, Options options)
{
    if (options.sequences && character == '\r' && !m_isCut) {
        m_column = 0;
        return;
    }
    if (options.sequences && character == '\b') {
        m_column = qMax(0, m_column - 1);
        return;
    }
    const bool isReturn = character == '\r';
    const bool isEnd = isLineEnd(character);
    if (isEnd)
        m_column = m_line.size();
    if (options.symbols && character <= kDelete)
        putName(character);
    else if (!isEnd && !isReturn && !(options.sequences && character == kBell))
        put(character);
    m_afterReturn = isReturn;
    if (isEnd || (isReturn && !options.symbols))
        endLine();
}

// Behind the escape character.
void TerminalText::feedEscape(uint character, Options options)
{
    m_state = State::Text;
    if (character == '[') {
        m_state = State::Sequence;
        m_pending = QLatin1Char('[');
    } else if (character == ']' || character == 'P' || character == 'X' || character == '^' ||
               character == '_') {
        m_state = State::String;
        m_pending = QChar(ushort(character));
    } else if (character >= kSpace && character < 0x30) {
        m_state = State::Escape; // another character ends it
    } else if (character == 'c') {
        m_style = {};
    } else if (character < kSpace || character > 0x7E) {
        m_pending.clear();
        giveUp(options);
        feedText(character, options);
    }
}

void TerminalText::feedSequence(uint character, Options options)
{
    if (character >= 0x40 && character <= 0x7E) {
        m_state = State::Text;
        runSequence(character);
    } else if (character >= kSpace && character < 0x40 && m_pending.size() < kMaxSequence) {
        m_pending += QChar(ushort(character));
    } else {
        giveUp(options);
        feedText(character, options);
    }
}

// Ended by a bell, or by an escape character and a backslash.
void TerminalText::feedString(uint character, Options options)
{
    const bool isAfterEscape = m_state == State::StringEscape;
    if (character == kBell || (isAfterEscape && character == '\\')) {
        m_state = State::Text;
    } else if (isAfterEscape) {
        giveUp(options);
        feedEscape(character, options);
    } else if (character == kEscape) {
        m_state = State::StringEscape;
    } else if (character < kSpace || m_pending.size() >= kMaxString) {
        giveUp(options);
        feedText(character, options);
    } else {
        append(character, &m_pending);
    }
}

// What looked like a sequence is shown.
void TerminalText::giveUp(Options options)
{
    m_state = State::Text;
    if (options.symbols)
        putName(kEscape);
    else
        put(kEscape);
    const QString pending = std::exchange(m_pending, QString());
    for (const uint character : pending.toUcs4())
        put(character);
}

// ---- the line

// "<CR>", in a color that text rarely has.
void TerminalText::putName(uint character)
{
    const TextStyle style = m_style;
    m_style = {};
    m_style.text = kSymbolColor;
    const QString name = QLatin1String(character < kSpace ? kNames[character] : "DEL");
    for (const QChar letter : QLatin1Char('<') + name + QLatin1Char('>'))
        put(letter.unicode());
    m_style = style;
}

void TerminalText::put(uint character)
{
    while (m_line.size() < m_column)
        m_line.append({' ', TextStyle()});
    if (m_column < m_line.size()) {
        touch(m_column);
        m_line[m_column] = {character, m_style};
    } else {
        m_line.append({character, m_style});
    }
    ++m_column;
    if (m_line.size() < 2 * kMaxLine || m_column < m_line.size())
        return;
    show();
    m_line.remove(0, kMaxLine);
    m_isCut = true;
    m_column = m_same = m_line.size();
    m_shownText.clear();
    for (const Cell &cell : qAsConst(m_line))
        append(cell.character, &m_shownText);
}

// Puts the line as it is now in place of what was shown of it.
void TerminalText::show()
{
    int kept = 0; // UTF-16 units
    for (int i = 0; i < m_same; ++i)
        kept += QChar::requiresSurrogates(m_line.at(i).character) ? 2 : 1;
    const int removed = m_shownText.size() - kept;
    const int inOutput = qMin(removed, m_output.text.size());
    m_output.removed.prepend(m_shownText.mid(kept, removed - inOutput));
    m_output.text.chop(inOutput);
    m_shownText.truncate(kept);
    QVector<StyledRun> &runs = m_output.runs;
    while (!runs.isEmpty() && runs.last().begin >= m_output.text.size())
        runs.removeLast();
    if (!runs.isEmpty())
        runs.last().length = qMin(runs.last().length, m_output.text.size() - runs.last().begin);
    for (int i = m_same; i < m_line.size(); ++i) {
        const Cell &cell = m_line.at(i);
        const int begin = m_output.text.size();
        append(cell.character, &m_output.text);
        append(cell.character, &m_shownText);
        const int length = m_output.text.size() - begin;
        if (cell.style.isPlain())
            continue;
        if (!runs.isEmpty() && runs.last().begin + runs.last().length == begin &&
            runs.last().style == cell.style)
            runs.last().length += length;
        else
            runs.append({begin, length, cell.style});
    }
    m_same = m_line.size();
}

void TerminalText::endLine()
{
    show();
    m_output.text += QLatin1Char('\n');
    breakLine();
}

void TerminalText::breakLine()
{
    m_line.clear();
    m_shownText.clear();
    m_column = m_same = 0;
    m_isCut = false;
}

void TerminalText::reset()
{
    *this = TerminalText();
}

// ---- sequences

QVector<int> TerminalText::numbers() const
{
    QVector<int> numbers;
    QString digits = m_pending.mid(1);
    digits.replace(QStringLiteral("::"), QStringLiteral(";")); // an empty color space
    digits.replace(QLatin1Char(':'), QLatin1Char(';'));
    for (const QString &number : digits.split(QLatin1Char(';')))
        numbers.append(number.toInt());
    return numbers;
}

void TerminalText::runSequence(uint final)
{
    const QVector<int> given = numbers();
    const int count = qBound(1, given.first(), kMaxLine);
    switch (final) {
    case 'm':
        if (m_pending.size() == 1 || m_pending.at(1) != QLatin1Char('>')) // not a key mode
            setStyle(given);
        break;
    case 'K': // erase: behind the cursor, before it, or all
        for (int i = 0; given.first() > 0 && i < qMin(m_column + 1, m_line.size()); ++i) {
            touch(i);
            m_line[i] = {' ', TextStyle()};
        }
        if (given.first() != 1 && m_column < m_line.size()) {
            touch(m_column);
            m_line.resize(m_column);
        }
        break;
    case 'C':
        m_column = qMin(m_column + count, kMaxLine);
        break;
    case 'D':
        m_column = qMax(0, m_column - count);
        break;
    case 'G':
        m_column = count - 1;
        break;
    default:
        break;
    }
    m_pending.clear();
}

// Behind 38 or 48. -1 where it is none.
int TerminalText::color(const QVector<int> &numbers, int *at)
{
    const auto next = [&] { return ++*at < numbers.size() ? numbers.at(*at) : -1; };
    const int kind = next();
    if (kind == 5)
        return qBound(-1, next(), 255);
    if (kind != 2)
        return -1;
    const int red = next();
    const int green = next();
    const int blue = next();
    return TextStyle::isRgb | qBound(0, red, 255) << 16 | qBound(0, green, 255) << 8 | qBound(0, blue, 255);
}

void TerminalText::setStyle(const QVector<int> &numbers)
{
    for (int i = 0; i < numbers.size(); ++i) {
        const int number = numbers.at(i);
        if (number == 0)
            m_style = {};
        else if (number == 1 || number == 22)
            m_style.isBold = number == 1;
        else if (number == 3 || number == 23)
            m_style.isItalic = number == 3;
        else if (number == 4 || number == 24)
            m_style.isUnderlined = number == 4;
        else if (number == 7 || number == 27)
            m_style.isInverse = number == 7;
        else if (number >= 30 && number <= 37)
            m_style.text = number - 30;
        else if (number == 38)
            m_style.text = color(numbers, &i);
        else if (number == 39)
            m_style.text = -1;
        else if (number >= 40 && number <= 47)
            m_style.ground = number - 40;
        else if (number == 48)
            m_style.ground = color(numbers, &i);
        else if (number == 49)
            m_style.ground = -1;
        else if (number >= 90 && number <= 97)
            m_style.text = number - 90 + 8;
        else if (number >= 100 && number <= 107)
            m_style.ground = number - 100 + 8;
    }
}
