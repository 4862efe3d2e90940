#pragma once

// The rows of the multi-send list and their file. A row is known by its index,
// (page - 1) x 10 + place on the page; pages are counted from 1.
//
// File: text, one row per line: index in decimal, "#", the row's text (which
// may itself hold "#"), "\n".

#include <QByteArray>
#include <QMap>
#include <QString>

class SendList
{
public:
    static constexpr int rowsPerPage = 10;
    static constexpr int fewestPages = 5;
    static constexpr int mostPages = 100;

    static int index(int page, int place) { return (page - 1) * rowsPerPage + place; }

    QString row(int index) const { return m_rows.value(index); }
    // Sets a row's text; an empty text drops the row. True when that changed
    // anything.
    bool setRow(int index, const QString &text);

    // Empties the ten rows of a page. True when any held text.
    bool clearPage(int page);
    // Drops the ten rows of a page; those of later pages move down.
    void removePage(int page);

    // Pages needed for the highest row: at least fewestPages, at most mostPages.
    int pageCount() const;

    // Replaces the rows by those of a file's bytes (UTF-8, or GB18030 where
    // that is invalid). Lines of another form, and indices outside the pages,
    // are ignored; a later line with the same index replaces the earlier one.
    void read(const QByteArray &file);
    // The file's bytes: UTF-8, ascending indices.
    QByteArray write() const;

private:
    QMap<int, QString> m_rows;
};
