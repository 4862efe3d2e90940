#include "hexnotes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <algorithm>

namespace {

constexpr int kMaxName = 200; // characters

// Beyond 2 to the 53rd, a number of JSON is not exact.
qint64 numberOf(const QJsonValue &value)
{
    const double number = value.toDouble(-1);
    return number >= 0 && number < 9e15 ? static_cast<qint64>(number) : -1;
}

template <class Entry>
void addNewOf(QVector<Entry> *ours, const QVector<Entry> &others, const QVector<Entry> &base)
{
    QSet<QByteArray> known;
    const auto textOf = [](const Entry &entry) { return QJsonDocument(entry.toJson()).toJson(); };
    for (const auto *entries : {&base, static_cast<const QVector<Entry> *>(ours)})
        for (const Entry &entry : *entries)
            known.insert(textOf(entry));
    for (const Entry &entry : others)
        if (!known.contains(textOf(entry)))
            ours->append(entry);
}

} // namespace

QJsonObject HexBookmark::toJson() const
{
    return {{"address", double(address)}, {"length", double(length)}, {"name", name}, {"color", color}};
}

QByteArray HexNotes::toJson() const
{
    QJsonArray marks, checksums;
    for (const HexBookmark &mark : bookmarks)
        marks.append(mark.toJson());
    for (const HexRule &rule : rules)
        checksums.append(rule.toJson());
    return QJsonDocument(QJsonObject{{"korvexNotes", 1}, {"bookmarks", marks}, {"checksums", checksums}})
        .toJson();
}

bool HexNotes::fromJson(const QByteArray &content)
{
    *this = HexNotes();
    const QJsonObject object = QJsonDocument::fromJson(content).object();
    if (object.value(QLatin1String("korvexNotes")).toInt() != 1)
        return false;
    const QJsonArray marks = object.value(QLatin1String("bookmarks")).toArray();
    for (int i = 0; i < qMin(marks.size(), maxEntries); ++i) {
        const QJsonObject entry = marks.at(i).toObject();
        HexBookmark mark;
        mark.address = numberOf(entry.value(QLatin1String("address")));
        mark.length = numberOf(entry.value(QLatin1String("length")));
        mark.name = entry.value(QLatin1String("name")).toString().left(kMaxName).simplified();
        mark.color = qBound(0, entry.value(QLatin1String("color")).toInt(), HexBookmark::colorCount - 1);
        if (mark.address >= 0 && mark.length > 0)
            bookmarks.append(mark);
    }
    sortBookmarks();
    const QJsonArray checksums = object.value(QLatin1String("checksums")).toArray();
    for (int i = 0; i < qMin(checksums.size(), maxEntries); ++i)
        if (const auto rule = HexRule::fromJson(checksums.at(i).toObject()))
            rules.append(*rule);
    return true;
}

void HexNotes::sortBookmarks()
{
    std::stable_sort(
        bookmarks.begin(), bookmarks.end(),
        [](const HexBookmark &left, const HexBookmark &right) { return left.address < right.address; });
}

void HexNotes::addNew(const HexNotes &others, const HexNotes &base)
{
    addNewOf(&bookmarks, others.bookmarks, base.bookmarks);
    addNewOf(&rules, others.rules, base.rules);
    sortBookmarks();
}
