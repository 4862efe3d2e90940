#include "linevalues.h"

#include "numbertext.h"

namespace {

constexpr int kMaxName = 32;
constexpr int kMaxColumns = 256;

bool isNameStart(QChar character)
{
    return character.isLetter() || character == QLatin1Char('_') || character == QLatin1Char('$');
}

bool isNamePart(QChar character)
{
    const ushort code = character.unicode();
    return character.isLetterOrNumber() || code == '_' || code == '.' || code == '-' || code == '/' ||
           code == '%' || code == '$' || code == '#' || code == 0xB0;
}

bool isAssignment(QChar character)
{
    const ushort code = character.unicode();
    return code == '=' || code == ':' || code == 0xFF1A;
}

bool isIgnored(QChar character)
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

bool isComma(QChar character)
{
    const ushort code = character.unicode();
    return code == ',' || code == ';' || code == '|' || code == 0xFF0C || code == 0xFF1B;
}

// Reads a line from the left as words, numbers and what is between them.
class Scanner
{
public:
    enum Kind { End, Word, Number, Assignment, Other };

    explicit Scanner(const QString &text)
        : m_text(text)
    {
    }

    Kind next()
    {
        while (m_at < m_text.size() && isIgnored(m_text.at(m_at)))
            ++m_at;
        begin = m_at;
        if (m_at == m_text.size())
            return End;
        const Kind kind = scan();
        end = m_at;
        return kind;
    }

    int begin = 0; // of what next() found
    int end = 0;
    NumberText::Number number;

private:
    Kind scan()
    {
        const QChar first = m_text.at(m_at);
        if (isAssignment(first)) {
            while (m_at < m_text.size() && isAssignment(m_text.at(m_at)))
                ++m_at;
            return Assignment;
        }
        const QChar *const text = m_text.constData();
        number = NumberText::read(text + m_at, text + m_text.size());
        if (number.length > 0) {
            m_at += number.length;
            return Number;
        }
        if (isNameStart(first)) {
            skipName();
            return Word;
        }
        if (!first.isDigit()) {
            ++m_at;
            return Other;
        }
        return scanMixed();
    }

    // "imu.x", "Temp(C)", "acc[0]"
    void skipName()
    {
        while (m_at < m_text.size() && isNamePart(m_text.at(m_at)))
            ++m_at;
        if (m_at == m_text.size() ||
            (m_text.at(m_at) != QLatin1Char('(') && m_text.at(m_at) != QLatin1Char('[')))
            return;
        const bool isRound = m_text.at(m_at) == QLatin1Char('(');
        const int close =
            m_text.midRef(m_at, kMaxName).indexOf(isRound ? QLatin1Char(')') : QLatin1Char(']'));
        const int behind = m_at + close + 1;
        // Otherwise the brackets are an array's or enclose something else.
        if (close > 1 && behind < m_text.size() && isAssignment(m_text.at(behind)))
            m_at = behind;
    }

    // "3v3" and "5V" are names, "192.168.1.1", "12:30" and "2026-01-31" are nothing.
    Kind scanMixed()
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

    const QString &m_text;
    int m_at = 0;
};

bool isInParentheses(const QString &text, int begin, int end)
{
    return begin > 0 && end < text.size() && text.at(begin - 1) == QLatin1Char('(') &&
           text.at(end) == QLatin1Char(')');
}

void mix(quint64 *hash, quint64 value)
{
    *hash = (*hash ^ value) * 0x100000001B3ULL;
}

QChar separatorOf(const QString &text)
{
    for (const char16_t separator : {u'\t', u';', u',', u'，', u'|'})
        if (text.contains(QChar(separator)))
            return QChar(separator);
    return QLatin1Char(' ');
}

// The place of a field, without spaces, quotes and brackets around it.
struct Field
{
    int begin;
    int end;
};

QVector<Field> fieldsOf(const QString &text, QChar separator)
{
    QVector<Field> fields;
    const bool bySpaces = separator == QLatin1Char(' ');
    for (int begin = 0; begin <= text.size() && fields.size() <= kMaxColumns;) {
        int end = text.indexOf(separator, begin);
        end = end < 0 ? text.size() : end;
        Field field{begin, end};
        while (field.begin < field.end && isIgnored(text.at(field.begin)))
            ++field.begin;
        while (field.end > field.begin && isIgnored(text.at(field.end - 1)))
            --field.end;
        if (!bySpaces || field.end > field.begin)
            fields.append(field);
        begin = end + 1;
    }
    if (!fields.isEmpty() && fields.last().begin == fields.last().end)
        fields.removeLast(); // behind a separator at the end
    return fields;
}

bool isWord(const QString &text, const Field &field)
{
    if (field.end == field.begin || field.end - field.begin > kMaxName || !isNameStart(text.at(field.begin)))
        return false;
    for (int i = field.begin; i < field.end; ++i)
        if (!isNamePart(text.at(i)))
            return false;
    return true;
}

// A time or a date.
bool isMoment(const QString &text, const Field &field)
{
    for (int i = field.begin; i < field.end; ++i)
        if (!text.at(i).isDigit() && !QStringLiteral(":-/. TZ").contains(text.at(i)))
            return false;
    return true;
}

} // namespace

bool LineValues::read(const QString &text, Form form)
{
    m_text = text;
    m_form = form;
    if (form != Form::Automatic)
        return form == Form::Columns ? readColumns(true) : readNames(form == Form::Pairs);
    m_form = Form::Pairs;
    if (readNames(true))
        return true;
    m_form = Form::Columns;
    if (readColumns(false))
        return true;
    m_form = Form::Words;
    return readNames(false);
}

void LineValues::addNamed(int nameBegin, int nameEnd, int element, double value, bool isFinite)
{
    if (element == 1)
        m_items.last().element = 0;
    m_items.append({nameBegin, nameEnd, element > 0 ? element : -1, value, isFinite});
}

// A name is the words before a number: all of them at the beginning or behind a
// comma, the last one behind a number, which may have a unit, and directly before
// an assignment without spaces. Numbers without a name continue an array.
bool LineValues::readNames(bool withAssignments)
{
    m_items.clear();
    m_columns = 0;
    Scanner scanner(m_text);
    int nameBegin = -1;
    int nameEnd = -1;
    int element = -1; // of the last number; -1: it has no name
    bool isBehindNumber = false;
    bool isAssigned = false;
    for (Scanner::Kind kind = scanner.next(); kind != Scanner::End; kind = scanner.next()) {
        switch (kind) {
        case Scanner::Word: {
            if (nameBegin >= 0 && isInParentheses(m_text, scanner.begin, scanner.end))
                break; // a unit: "Temp (C): 21"
            const bool continues =
                nameBegin >= 0 && !isBehindNumber && !isAssigned && scanner.end - nameBegin <= kMaxName;
            nameBegin = continues ? nameBegin : scanner.begin;
            nameEnd = scanner.end;
            isAssigned = false;
            element = -1;
            break;
        }
        case Scanner::Assignment: {
            isAssigned = nameBegin >= 0;
            const bool isTight =
                scanner.end < m_text.size() && !m_text.at(scanner.end).isSpace() && scanner.begin == nameEnd;
            const int space = m_text.lastIndexOf(QLatin1Char(' '), qMax(0, nameEnd - 1));
            if (isAssigned && isTight && space > nameBegin)
                nameBegin = space + 1;
            element = -1;
            break;
        }
        case Scanner::Number:
            if (element >= 0) {
                const Item name = m_items.last();
                addNamed(name.nameBegin, name.nameEnd, ++element, scanner.number.value,
                         scanner.number.isFinite);
            } else if (nameBegin >= 0 && (isAssigned || !withAssignments)) {
                element = 0;
                addNamed(nameBegin, nameEnd, element, scanner.number.value, scanner.number.isFinite);
            }
            nameBegin = -1;
            isAssigned = false;
            isBehindNumber = true;
            break;
        default: {
            const bool isAtComma = isComma(m_text.at(scanner.begin));
            nameBegin = -1;
            isAssigned = false;
            isBehindNumber = isBehindNumber && !isAtComma;
            element = isAtComma ? element : -1;
        }
        }
    }
    return !m_items.isEmpty();
}

bool LineValues::readColumns(bool isCertain)
{
    m_items.clear();
    m_separator = separatorOf(m_text);
    const QChar *const text = m_text.constData();
    const NumberText::Number only = NumberText::readAll(text, text + m_text.size());
    QVector<Field> fields{{0, m_text.size()}};
    if (only.length == 0)
        fields = fieldsOf(m_text, m_separator);
    m_columns = fields.size();
    const bool hasTag = fields.size() > 1 && isWord(m_text, fields.first());
    bool isTable = true;
    for (int column = 0; column < fields.size(); ++column) {
        const Field field = fields.at(column);
        const NumberText::Number number = NumberText::readAll(text + field.begin, text + field.end);
        if (number.length > 0)
            m_items.append({hasTag ? fields.first().begin : 0, hasTag ? fields.first().end : 0, column,
                            number.value, number.isFinite});
        else
            isTable = isTable && (isWord(m_text, field) || isMoment(m_text, field));
    }
    if (!isCertain && m_separator == QLatin1Char(' '))
        isTable = m_items.size() == m_columns;
    return !m_items.isEmpty() && (isCertain || isTable);
}

QString LineValues::name(const Item &item) const
{
    const QString name = m_text.mid(item.nameBegin, item.nameEnd - item.nameBegin);
    if (m_form != Form::Columns)
        return item.element < 0 ? name : QStringLiteral("%1[%2]").arg(name).arg(item.element);
    if (name.isEmpty())
        return QStringLiteral("列%1").arg(item.element + 1);
    return m_columns == 2 ? name : QStringLiteral("%1 %2").arg(name).arg(item.element);
}

// Which fields of a table are numbers may differ from line to line.
quint64 LineValues::shape() const
{
    quint64 hash = 0xCBF29CE484222325ULL;
    mix(&hash, quint64(m_form));
    const bool isTable = m_form == Form::Columns;
    if (isTable) {
        mix(&hash, m_separator.unicode());
        mix(&hash, quint64(m_columns));
    }
    for (const Item &item : m_items) {
        if (!isTable)
            mix(&hash, quint64(item.element + 1) << 16);
        for (int i = item.nameBegin; i < item.nameEnd; ++i)
            mix(&hash, m_text.at(i).unicode());
        if (isTable)
            break;
    }
    return hash;
}

QStringList LineValues::heading(const QString &text, QChar separator, int columns)
{
    const QVector<Field> fields = fieldsOf(text, separator);
    QStringList names;
    if (columns < 2 || fields.size() != columns)
        return names;
    for (const Field &field : fields) {
        const QString name = text.mid(field.begin, field.end - field.begin);
        if (name.isEmpty() || name.size() > kMaxName || name.at(0).isDigit() ||
            name.at(0) == QLatin1Char('-'))
            return {};
        names.append(name);
    }
    return names;
}
