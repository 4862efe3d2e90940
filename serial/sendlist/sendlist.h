#pragma once

// The rows of the multi-send list and their file. A row is known by its index,
// (page - 1) x 10 + place on the page; pages are counted from 1.
//
// File: text, one row per line: index in decimal, "#", the row's text (which
// may itself hold "#"), "\n". Lines of another form are kept where they stand.
// The file may be changed by others, such as a second copy of the program:
// merge() before write() keeps what they wrote.

#include <QByteArray>
#include <QMap>
#include <QSet>
#include <QStringList>

class SendList
{
public:
    static constexpr int rowsPerPage = 10;
    static constexpr int minPages = 5;
    static constexpr int maxPages = 100;

    static int index(int page, int place) { return (page - 1) * rowsPerPage + place; }

    QString row(int index) const { return m_rows.value(index); }
    // Sets a row's text; an empty text drops the row. True when that changed
    // anything.
    bool setRow(int index, const QString &text);

    // Rows were changed since the last read() or setWritten().
    bool isChanged() const { return !m_changed.isEmpty(); }
    void setWritten() { m_changed.clear(); }

    // True when any row of a page holds text.
    bool isFilled(int page) const;
    // Empties the ten rows of a page. True when any held text.
    bool clearPage(int page);
    // Drops the ten rows of a page; those of later pages move down.
    void removePage(int page);

    // The page of the highest row, 0 without rows.
    int lastFilledPage() const;
    // Pages to offer: at least minPages, at most maxPages.
    int pageCount() const;

    // Replaces the rows by those of a file's bytes (UTF-8, or GB18030 where
    // that is invalid). A later line with the same index replaces the earlier
    // one. Lines of another form, indices outside the pages and texts that no
    // line edit can hold are no rows.
    void read(const QByteArray &file);
    // The same, but rows changed here since the last read or write stay.
    void merge(const QByteArray &file);
    // The file's bytes: UTF-8, ascending indices; each line that is no row
    // before the row that it preceded.
    QByteArray write() const;

private:
    void readLine(const QStringRef &line, QStringList *others);

    QMap<int, QString> m_rows;
    QMap<int, QStringList> m_others; // lines that are no rows, by the index of the row behind them
    QSet<int> m_changed;
};
