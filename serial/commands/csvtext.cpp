#include "csvtext.h"

namespace {

QString quoted(const QString &field)
{
    const bool isPlain = !field.contains(QLatin1Char(',')) && !field.contains(QLatin1Char('"')) &&
                         !field.contains(QLatin1Char('\n')) && !field.contains(QLatin1Char('\r')) &&
                         field == field.trimmed();
    if (isPlain)
        return field;
    QString inner = field;
    inner.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + inner + QLatin1Char('"');
}

class Reader
{
public:
    bool read(const QString &text)
    {
        for (int i = 0; i < text.size(); ++i) {
            const QChar character = text.at(i);
            if (m_isQuoted) {
                if (character != QLatin1Char('"'))
                    m_field += character;
                else if (i + 1 < text.size() && text.at(i + 1) == QLatin1Char('"'))
                    m_field += text.at(++i);
                else
                    m_isQuoted = false;
            } else if (character == QLatin1Char('"') && m_field.isEmpty()) {
                m_isQuoted = true;
                m_isFilled = true;
            } else if (character == QLatin1Char(',')) {
                endField();
                m_isFilled = true;
            } else if (character == QLatin1Char('\n')) {
                endRow();
            } else if (character != QLatin1Char('\r')) {
                m_field += character;
            }
        }
        endRow();
        return !m_isQuoted;
    }

    QVector<QStringList> rows;

private:
    void endField()
    {
        m_row.append(m_field);
        m_field.clear();
    }

    void endRow()
    {
        if (!m_field.isEmpty() || m_isFilled) {
            endField();
            rows.append(m_row);
        }
        m_row.clear();
        m_isFilled = false;
    }

    QString m_field;
    QStringList m_row;
    bool m_isQuoted = false;
    bool m_isFilled = false; // the row has a field, though it may be empty
};

} // namespace

QVector<QStringList> CsvText::read(const QString &text)
{
    Reader reader;
    return reader.read(text) ? reader.rows : QVector<QStringList>();
}

QString CsvText::write(const QVector<QStringList> &rows)
{
    QString text;
    for (const QStringList &row : rows) {
        QStringList fields;
        for (const QString &field : row)
            fields.append(quoted(field));
        text += fields.join(QLatin1Char(',')) + QLatin1Char('\n');
    }
    return text;
}
