#pragma once

// Tables as text: fields between separators, one record per line, quoted where needed
// (RFC 4180). Writes UTF-8; reads the bytes of any encoding whose characters contain
// no ASCII below 0x30, such as UTF-8 and GB18030, and decodes nothing.

#include <QByteArray>
#include <QStringList>
#include <QVector>

namespace CsvText {

// A field as it stands in a file whose separator is a comma.
QByteArray field(const QString &text);

// A record with its line end.
QByteArray line(const QStringList &fields);

// The records of a file, one after the other.
class Reader
{
public:
    // A quoted field ends within that many line breaks and bytes; otherwise its quote is
    // an ordinary character, so that a stray one costs no rows.
    static constexpr int maxBreaks = 20;
    static constexpr int maxQuotedBytes = 4096;

    // Begins at a place of the content.
    Reader(const QByteArray &content, char separator, int at = 0);

    bool atEnd() const { return m_at >= m_content.size(); }
    // The next record: its first fields, without quotes. An empty line has one empty
    // field.
    QVector<QByteArray> next(int maxFields);
    int fieldCount() const { return m_fieldCount; } // of that record, all of them
    int line() const { return m_line; }             // where that record begins, counted from 1

private:
    bool readQuoted(QByteArray *field);
    bool isFieldEnd(int at) const;
    void endLine();

    QByteArray m_content;
    char m_separator;
    int m_at;
    int m_line = 0;
    int m_nextLine = 1;
    int m_fieldCount = 0;
};

} // namespace CsvText
