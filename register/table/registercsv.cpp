#include "registercsv.h"

#include "textcodec.h"

#include <QStringList>
#include <QTextCodec>

#include <cstring>

namespace {

constexpr int kColumns = 4;
constexpr int kMaxDigits = 8;
constexpr int kTestedBytes = 1024 * 1024; // more than most full tables have

bool isUtf8(const QByteArray &content)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(content.constData(), qMin(content.size(), kTestedBytes),
                                                 &state);
    const bool isCut = content.size() > kTestedBytes; // possibly within a character
    return state.invalidChars == 0 && (isCut || state.remainingChars == 0);
}

} // namespace

bool RegisterRow::isEmpty() const
{
    return number.isEmpty() && address.isEmpty() && value.isEmpty() && description.isEmpty();
}

// Tables of other programs may have blanks and "0x" before the digits.
bool RegisterRow::parse(const QString &text, quint32 *result)
{
    QString digits = text.trimmed();
    if (digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        digits.remove(0, 2);
    if (digits.isEmpty() || digits.size() > kMaxDigits)
        return false;
    for (const QChar c : qAsConst(digits)) {
        const ushort code = c.toLower().unicode();
        if (!(code >= '0' && code <= '9') && !(code >= 'a' && code <= 'f'))
            return false;
    }
    *result = digits.toUInt(nullptr, 16);
    return true;
}

namespace RegisterCsv {

QStringList titles()
{
    return {QStringLiteral("寄存器编号"), QStringLiteral("寄存器地址"), QStringLiteral("寄存器值"),
            QStringLiteral("描述")};
}

QByteArray write(const QVector<RegisterRow> &rows)
{
    QString text = titles().join(QLatin1Char(',')) + QLatin1Char('\n');
    for (const RegisterRow &row : rows)
        text += row.number + QLatin1Char(',') + row.address + QLatin1Char(',') + row.value +
                QLatin1Char(',') + row.description + QLatin1Char('\n');
    return TextCodec::encode(text, TextCodec::Gb18030);
}

Reader::Reader(const QByteArray &content, int maxRows)
    : m_content(content)
    , m_codec(TextCodec::Gb18030)
    , m_maxRows(maxRows)
{
    if (m_content.startsWith("\xEF\xBB\xBF")) {
        m_at = 3;
        m_codec = TextCodec::Utf8;
    } else if (isUtf8(m_content)) {
        m_codec = TextCodec::Utf8;
    }
}

// In both encodings a line end or a comma is never part of another character.
bool Reader::read(int lines)
{
    for (; lines > 0 && m_at < m_content.size(); --lines) {
        const char *const line = m_content.constData() + m_at;
        const int left = m_content.size() - m_at;
        const void *const end = std::memchr(line, '\n', static_cast<size_t>(left));
        const int size = end ? static_cast<int>(static_cast<const char *>(end) - line) : left;
        m_at += size + (end ? 1 : 0);
        readLine(line, size > 0 && line[size - 1] == '\r' ? size - 1 : size);
    }
    return m_at < m_content.size();
}

void Reader::readLine(const char *line, int size)
{
    QString cells[kColumns];
    int column = 0;
    int begin = 0;
    const bool hasRoom = m_rows.size() < m_maxRows;
    for (int at = 0; at <= size && column < kColumns; ++at) {
        if (at < size && line[at] != ',')
            continue;
        if (hasRoom)
            cells[column] = TextCodec::decode(QByteArray::fromRawData(line + begin, at - begin), m_codec);
        ++column;
        begin = at + 1;
    }
    if (column < kColumns)
        m_skipped += size > 0 ? 1 : 0;
    else if (hasRoom)
        m_rows.append({cells[0], cells[1], cells[2], cells[3]});
    else
        ++m_beyondLimit;
}

} // namespace RegisterCsv
