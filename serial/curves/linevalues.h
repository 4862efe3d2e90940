#pragma once

// The numbers in one line with their names or columns. Knows the forms of lines,
// no curve: each line is judged by itself.
//
//   Pairs      a=1.5 b:2, free heap: 12034 bytes, acc: 1, 2, 3, {"t": 21.5}
//   Words      temp 23.4 C hum 40 %, acc 1 2 3
//   Columns    1,2,3   1;2;3   1 2 3   with tabs; $IMU,1,2,3

#include <QStringList>
#include <QVector>

class LineValues
{
public:
    enum class Form { Automatic, Pairs, Words, Columns };

    struct Item
    {
        int nameBegin = 0; // in the text; of a table's tag
        int nameEnd = 0;
        int element = -1; // of an array, or the column; from 0
        double value = 0;
        bool isFinite = true;
    };

    // Replaces what was read. False where the text has no numbers in that form.
    bool read(const QString &text, Form form);

    // Of the last line; Automatic where nothing was read.
    Form form() const { return m_form; }
    const QVector<Item> &items() const { return m_items; }
    // Of a table: how many columns, and what is between them; a space for any number
    // of spaces.
    int columns() const { return m_columns; }
    QChar separator() const { return m_separator; }
    // The name of an item, for the user.
    QString name(const Item &item) const;
    // The same for lines of the same shape, whatever their numbers are.
    quint64 shape() const;

    // The fields of a table's heading with that many columns; empty where the text
    // is none.
    static QStringList heading(const QString &text, QChar separator, int columns);

private:
    bool readNames(bool withAssignments);
    bool readColumns(bool isCertain);

    QString m_text;
    Form m_form = Form::Automatic;
    QVector<Item> m_items;
    int m_columns = 0;
    QChar m_separator;
};
