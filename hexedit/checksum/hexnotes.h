#pragma once

// What the user keeps about a file: bookmarks with names and colors, and checksum rules.
// A value; HexNotesFile knows where it is kept.

#include "hexrule.h"

#include <QVector>

struct HexBookmark
{
    qint64 address = 0;
    qint64 length = 1; // bytes
    QString name;
    int color = 0; // index into the list, see colorCount

    static constexpr int colorCount = 6;

    QJsonObject toJson() const;
};

struct HexNotes
{
    static constexpr int maxEntries = 10000; // of each list

    QVector<HexBookmark> bookmarks; // by address
    QVector<HexRule> rules;

    bool isEmpty() const { return bookmarks.isEmpty() && rules.isEmpty(); }
    QByteArray toJson() const;
    // Ignores entries that are impossible. False where it is no such file.
    bool fromJson(const QByteArray &content);
    // Adds what others put there: entries that are neither here nor in `base`.
    void addNew(const HexNotes &others, const HexNotes &base);
    void sortBookmarks();
};
