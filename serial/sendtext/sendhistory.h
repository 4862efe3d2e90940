#pragma once

// The texts that were sent last, newest first, each once. Reads and writes their
// file's bytes; opens nothing.
//
// File: UTF-8, a line each, newest first: "T" or "H" (hexadecimal), a space, the text
// with \\ for a backslash and \n for a line end.

#include <QByteArray>
#include <QString>
#include <QVector>

class SendHistory
{
public:
    static constexpr int maxEntries = 200;
    // Longer texts, of files and the like, are not kept.
    static constexpr int maxLength = 10000; // characters

    struct Entry
    {
        QString text;
        bool isHex = false;
        bool operator==(const Entry &other) const { return text == other.text && isHex == other.isHex; }
    };

    const QVector<Entry> &entries() const { return m_entries; }

    // False where it changes nothing.
    bool add(const Entry &entry);
    void remove(const Entry &entry);
    void clear();

    // What another copy of the program has written stays, behind what was added here;
    // what was removed here goes.
    void merge(const QByteArray &file);
    QByteArray write() const;
    // Something was added or removed since the last merge.
    bool isChanged() const { return m_isChanged; }
    void setWritten();

private:
    QVector<Entry> m_entries;
    QVector<Entry> m_removed;
    int m_added = 0; // so many of the entries are not in the file yet
    bool m_isChanged = false;
};
