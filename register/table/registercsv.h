#pragma once

// The register table's file: GB18030 text, one register per line, four cells
// separated by commas: number, address, value, description. Bytes in, rows out.

#include <QByteArray>
#include <QStringList>
#include <QVector>

struct RegisterRow
{
    QString number;
    QString address; // hexadecimal
    QString value;   // hexadecimal
    QString description;

    bool isEmpty() const;
    // The address or value as a number; false where it is not hexadecimal.
    bool addressNumber(quint32 *result) const { return parse(address, result); }
    bool valueNumber(quint32 *result) const { return parse(value, result); }

private:
    static bool parse(const QString &text, quint32 *result);
};

namespace RegisterCsv {

// The header line that every exported file begins with.
QStringList titles();

QByteArray write(const QVector<RegisterRow> &rows);

// Reads a file a slice at a time. Lines with fewer than four cells are skipped.
class Reader
{
public:
    // Valid UTF-8, and what has its byte order mark, is read as UTF-8.
    Reader(const QByteArray &content, int maxRows);

    // Reads up to that many more lines. False at the end.
    bool read(int lines);
    const QVector<RegisterRow> &rows() const { return m_rows; }
    int skipped() const { return m_skipped; }
    int beyondLimit() const { return m_beyondLimit; } // rows for which there was no room

private:
    void readLine(const char *line, int size);

    QByteArray m_content;
    int m_at = 0;
    int m_codec;
    int m_maxRows;
    int m_skipped = 0;
    int m_beyondLimit = 0;
    QVector<RegisterRow> m_rows;
};

} // namespace RegisterCsv
