#include "linevalues.h"

#include "linescanner.h"

namespace {

constexpr int kMaxColumns = 256;

// The numbers of a line with their names. A name is the words before a number: all
// of them at the beginning or behind a comma, the last one behind a number, which
// may have a unit, and directly before an assignment without spaces. Numbers
// without a name continue an array.
class NamedNumbers
{
public:
    NamedNumbers(const QString &text, bool withAssignments, QVector<LineValues::Item> *items)
        : m_text(text)
        , m_scanner(text)
        , m_withAssignments(withAssignments)
        , m_items(items)
    {
    }

    void read()
    {
        for (LineScanner::Kind kind = m_scanner.next(); kind != LineScanner::End; kind = m_scanner.next()) {
            if (kind == LineScanner::Word)
                addWord();
            else if (kind == LineScanner::Assignment)
                addAssignment();
            else if (kind == LineScanner::Number)
                addNumber();
            else
                endName();
        }
    }

private:
    void addWord()
    {
        const int begin = m_scanner.begin();
        const int end = m_scanner.end();
        const bool isUnit = m_nameBegin >= 0 && end < m_text.size() &&
                            m_text.at(begin - 1) == QLatin1Char('(') && m_text.at(end) == QLatin1Char(')');
        if (isUnit) // "Temp (C): 21"
            return;
        const bool continues = m_nameBegin >= 0 && !m_isBehindNumber && !m_isAssigned &&
                               end - m_nameBegin <= LineScanner::maxName;
        m_nameBegin = continues ? m_nameBegin : begin;
        m_nameEnd = end;
        m_isAssigned = false;
        m_element = -1;
    }

    void addAssignment()
    {
        m_isAssigned = m_nameBegin >= 0;
        m_element = -1;
        const int end = m_scanner.end();
        const bool isTight =
            end < m_text.size() && !m_text.at(end).isSpace() && m_scanner.begin() == m_nameEnd;
        const int space = m_text.lastIndexOf(QLatin1Char(' '), qMax(0, m_nameEnd - 1));
        if (m_isAssigned && isTight && space > m_nameBegin)
            m_nameBegin = space + 1;
    }

    void addNumber()
    {
        const NumberText::Number &number = m_scanner.number();
        if (m_element >= 0) {
            LineValues::Item next = m_items->last();
            if (++m_element == 1)
                m_items->last().element = 0;
            m_items->append({next.nameBegin, next.nameEnd, m_element, number.value, number.isFinite});
        } else if (m_nameBegin >= 0 && (m_isAssigned || !m_withAssignments)) {
            m_element = 0;
            m_items->append({m_nameBegin, m_nameEnd, -1, number.value, number.isFinite});
        }
        m_nameBegin = -1;
        m_isAssigned = false;
        m_isBehindNumber = true;
    }

    void endName()
    {
        const bool isComma = LineScanner::isComma(m_text.at(m_scanner.begin()));
        m_nameBegin = -1;
        m_isAssigned = false;
        m_isBehindNumber = m_isBehindNumber && !isComma;
        m_element = isComma ? m_element : -1;
    }

    const QString &m_text;
    LineScanner m_scanner;
    const bool m_withAssignments;
    QVector<LineValues::Item> *m_items;
    int m_nameBegin = -1;
    int m_nameEnd = -1;
    int m_element = -1; // of the last number; -1: it has no name
    bool m_isBehindNumber = false;
    bool m_isAssigned = false;
};

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
        while (field.begin < field.end && LineScanner::isIgnored(text.at(field.begin)))
            ++field.begin;
        while (field.end > field.begin && LineScanner::isIgnored(text.at(field.end - 1)))
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
    if (field.end == field.begin || field.end - field.begin > LineScanner::maxName ||
        !LineScanner::isNameStart(text.at(field.begin)))
        return false;
    for (int i = field.begin; i < field.end; ++i)
        if (!LineScanner::isNamePart(text.at(i)))
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

bool LineValues::readNames(bool withAssignments)
{
    m_items.clear();
    m_columns = 0;
    NamedNumbers(m_text, withAssignments, &m_items).read();
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
        if (name.isEmpty() || name.size() > LineScanner::maxName || name.at(0).isDigit() ||
            name.at(0) == QLatin1Char('-'))
            return {};
        names.append(name);
    }
    return names;
}
