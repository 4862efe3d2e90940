#include "registerlist.h"

#include "registercsv.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

constexpr int kTestedLines = 200;
constexpr int kTestedBytes = 64 * 1024;
constexpr int kUsualLineBytes = 200;
constexpr int kMaxLineBytes = 1024 * 1024; // longer ones are no list

bool isOneOf(QChar c, const char *characters)
{
    return c.unicode() < 0x80 && c.unicode() != 0 && std::strchr(characters, c.toLatin1());
}

bool isWord(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}

// One line: the pairs in it, its comments, and whether anything else is in it.
class LineParser
{
public:
    LineParser(const QString &line, bool isHexadecimal, bool isInComment)
        : m_line(line)
        , m_isHexadecimal(isHexadecimal)
        , m_isInComment(isInComment)
    {
    }

    void parse();
    QVector<RegisterRow> rows() const;
    bool isOther() const { return m_isOther; }
    bool isInComment() const { return m_isInComment; }

private:
    void splitComments();
    void dropDeclaration();
    void parseTail();
    bool parsePair();
    std::optional<QString> number();
    void skipBlanks();
    bool accept(const char *characters);

    QString m_line;
    bool m_isHexadecimal;
    bool m_isInComment;
    bool m_isOther = false;
    QString m_code; // without comments
    int m_at = 0;   // in the code
    QStringList m_comments;
    QVector<RegisterRow> m_rows;
};

void LineParser::parse()
{
    splitComments();
    dropDeclaration();
    while (!m_isOther) {
        skipBlanks();
        if (m_at == m_code.size())
            return;
        if (!m_rows.isEmpty() && isOneOf(m_code.at(m_at), ";#"))
            return parseTail();
        if (accept("}],;)"))
            continue;
        const int begin = m_at;
        if (parsePair())
            continue;
        m_at = begin;
        m_isOther = !accept("{([");
    }
}

// Each pair gets the line's comment.
QVector<RegisterRow> LineParser::rows() const
{
    QVector<RegisterRow> rows = m_rows;
    const QString comment = RegisterRow::fitted(m_comments.join(QLatin1Char(' ')));
    for (RegisterRow &row : rows)
        row.description = comment;
    return rows;
}

void LineParser::splitComments()
{
    int at = 0;
    while (at < m_line.size()) {
        if (m_isInComment) {
            const int end = m_line.indexOf(QLatin1String("*/"), at);
            const QString text = m_line.mid(at, end < 0 ? -1 : end - at).trimmed();
            if (!text.isEmpty())
                m_comments += text;
            m_isInComment = end < 0;
            at = end < 0 ? m_line.size() : end + 2;
            m_code += QLatin1Char(' ');
        } else if (m_line.midRef(at, 2) == QLatin1String("/*")) {
            m_isInComment = true;
            at += 2;
        } else if (m_line.midRef(at, 2) == QLatin1String("//")) {
            const QString text = m_line.mid(at + 2).trimmed();
            if (!text.isEmpty())
                m_comments += text;
            return;
        } else {
            m_code += m_line.at(at++);
        }
    }
}

// "... name[][2] = {": pairs may follow in the line.
void LineParser::dropDeclaration()
{
    const int equals = m_code.indexOf(QLatin1Char('='));
    const int brace = m_code.indexOf(QLatin1Char('{'));
    if (equals <= 0 || brace < equals || !m_code.midRef(equals + 1, brace - equals - 1).trimmed().isEmpty())
        return;
    const QString begin = m_code.left(equals).trimmed();
    if (begin.isEmpty() || begin.at(0).isDigit() || !isWord(begin.at(0)))
        return;
    m_at = brace + 1;
    skipBlanks();
    m_isOther = m_at == m_code.size(); // the declaration alone
}

// A comment of other kinds of files, behind a pair.
void LineParser::parseTail()
{
    const bool isSemicolon = m_code.at(m_at) == QLatin1Char(';');
    const QString text = m_code.mid(m_at + 1).trimmed();
    m_at = m_code.size();
    if (isSemicolon && text.contains(QLatin1Char('{')))
        m_isOther = true;
    else if (!text.isEmpty() && text != QLatin1String("}"))
        m_comments.prepend(text);
}

bool LineParser::parsePair()
{
    const bool hasBracket = accept("{([");
    skipBlanks();
    const std::optional<QString> address = number();
    if (!address)
        return false;
    const int end = m_at;
    skipBlanks();
    const bool hasSemicolon = accept(";");
    const bool isSeparated = hasSemicolon || accept(",:=") || m_at > end;
    skipBlanks();
    const std::optional<QString> value = isSeparated ? number() : std::nullopt;
    if (!value)
        return false;
    skipBlanks();
    if (hasBracket) {
        accept(",");
        skipBlanks();
        if (!accept("})]"))
            return false;
    } else if (m_at < m_code.size() && !isOneOf(m_code.at(m_at), hasSemicolon ? "#" : ";#")) {
        // Several pairs without brackets may as well be something else.
        accept(",");
        skipBlanks();
        if (m_at < m_code.size())
            return false;
    }
    m_rows.append({{}, *address, *value, {}});
    return true;
}

// As the table has it: hexadecimal, two digits at least.
std::optional<QString> LineParser::number()
{
    const int begin = m_at;
    while (m_at < m_code.size() && isWord(m_code.at(m_at)))
        ++m_at;
    QString digits = m_code.mid(begin, m_at - begin);
    bool isHexadecimal = m_isHexadecimal;
    if (digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        digits.remove(0, 2);
        isHexadecimal = true;
    } else if (digits.endsWith(QLatin1Char('h'), Qt::CaseInsensitive)) {
        digits.chop(1);
        isHexadecimal = true;
    }
    while (!digits.isEmpty() && isOneOf(digits.at(digits.size() - 1), "uUlL"))
        digits.chop(1);
    quint32 number = 0;
    if (isHexadecimal && RegisterRow::parse(digits, &number) && !digits.contains(QLatin1Char('x')))
        return digits.rightJustified(2, QLatin1Char('0'));
    // In C a leading zero would make it octal.
    bool isNumber = !isHexadecimal && !digits.isEmpty() && digits.at(0).isDigit();
    if (isNumber)
        number = digits.toUInt(&isNumber, 10);
    if (!isNumber || (digits.size() > 1 && digits.at(0) == QLatin1Char('0') && number != 0))
        return std::nullopt;
    return QString::number(number, 16).toUpper().rightJustified(2, QLatin1Char('0'));
}

void LineParser::skipBlanks()
{
    while (m_at < m_code.size() && m_code.at(m_at).isSpace())
        ++m_at;
}

bool LineParser::accept(const char *characters)
{
    const bool isThere = m_at < m_code.size() && isOneOf(m_code.at(m_at), characters);
    m_at += isThere ? 1 : 0;
    return isThere;
}

bool hasOwnBases(const QByteArray &text)
{
    const QByteArray tested = text.left(kTestedBytes).toLower();
    return tested.contains("0x") || tested.contains('{');
}

QString identifier(const QString &name)
{
    QString text;
    for (const QChar c : name)
        text += c.unicode() < 0x80 && c.isLetterOrNumber() ? c : QLatin1Char('_');
    const bool hasName = std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetterOrNumber(); });
    if (!hasName)
        return QStringLiteral("registers");
    // A word of C, a leading digit or underscore would be no name.
    return (text.at(0).isLetter() ? text : QLatin1Char('r') + text) + QStringLiteral("_registers");
}

QByteArray digitsOf(quint32 number, int bytes)
{
    return "0x" + QByteArray::number(number, 16).toUpper().rightJustified(2 * bytes, '0');
}

// A backslash at the end would join the next line to the comment.
QByteArray commentOf(const RegisterRow &row)
{
    QString text = (row.description.isEmpty() ? row.number : row.description).trimmed();
    while (text.endsWith(QLatin1Char('\\')) || text.endsWith(QLatin1String("?\?/")))
        text.chop(1);
    return text.trimmed().isEmpty() ? QByteArray() : " // " + text.trimmed().toUtf8();
}

} // namespace

namespace RegisterList {

// Comments of pairs may have commas, too.
bool isList(const RegisterText &text)
{
    const QByteArray tested = text.bytes.left(kTestedBytes);
    Reader reader(tested, kTestedBytes);
    int pairs = 0;
    int others = 0;
    int count = 0;
    for (const QByteArray &line : tested.split('\n')) {
        const int before = reader.rows().size();
        reader.read(1);
        if (reader.rows().size() > before)
            ++pairs;
        else if (RegisterCsv::formOf(line).lines > 0)
            ++others;
        if (++count == kTestedLines)
            break;
    }
    return pairs > others;
}

Reader::Reader(const RegisterText &text, int maxRows)
    : RegisterReader(maxRows)
    , m_text(text)
    , m_isHexadecimal(!hasOwnBases(m_text.bytes))
{
}

bool Reader::read(int lines)
{
    while (lines > 0 && m_at < m_text.bytes.size()) {
        const int end = m_text.bytes.indexOf('\n', m_at);
        const int size = (end < 0 ? m_text.bytes.size() : end) - m_at;
        const bool isTooLong = size > kMaxLineBytes;
        const QByteArray line =
            QByteArray::fromRawData(m_text.bytes.constData() + m_at, isTooLong ? 0 : size);
        LineParser parser(m_text.decoded(line), m_isHexadecimal, m_isInComment);
        parser.parse();
        m_isInComment = parser.isInComment();
        m_at += size + 1;
        lines -= 1 + size / kUsualLineBytes;
        ++m_line;
        if (isTooLong || parser.isOther())
            skip(m_line);
        else
            for (const RegisterRow &row : parser.rows())
                add(row);
    }
    return m_at < m_text.bytes.size();
}

Written write(const QVector<RegisterRow> &rows, Form form, const QString &name, int addressLength,
              int valueLength)
{
    Written written;
    QByteArray pairs;
    addressLength = qBound(1, addressLength, 4);
    valueLength = qBound(1, valueLength, 4);
    quint32 largest = 0;
    for (const RegisterRow &row : rows) {
        quint32 address = 0;
        quint32 value = 0;
        const bool isPair = row.addressNumber(&address) && row.valueNumber(&value);
        written.hasAll = written.hasAll && (row.isEmpty() || (isPair && row.number.isEmpty()));
        if (!isPair)
            continue;
        ++written.pairs;
        largest = qMax(largest, qMax(address, value));
        pairs += "    {" + digitsOf(address, addressLength) + ", " + digitsOf(value, valueLength) + "}," +
                 commentOf(row) + '\n';
    }
    const int bytes = qMax(qMax(addressLength, valueLength), largest > 0xFFFF ? 4 : largest > 0xFF ? 2 : 1);
    const QByteArray type = bytes > 2 ? "uint32_t" : bytes == 2 ? "uint16_t" : "uint8_t";
    const QByteArray id = identifier(name).toLatin1();
    const QByteArray guard = id.toUpper() + "_H";
    const bool isHeader = form == Header;
    written.text = (isHeader ? "#ifndef " + guard + "\n#define " + guard + "\n\n" : QByteArray()) +
                   "#include <stdint.h>\n\n" + (isHeader ? "static " : "") + "const " + type + ' ' + id +
                   "[][2] = {\n" + pairs + "};\n" + (isHeader ? "\n#endif\n" : "");
    return written;
}

} // namespace RegisterList
