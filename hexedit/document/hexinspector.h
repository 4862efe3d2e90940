#pragma once

// What the bytes at an address mean when they are read as numbers, text or a
// point in time.

#include <QByteArray>
#include <QString>
#include <QVector>

namespace HexInspector {

struct Value
{
    QString name;
    QString text; // empty where too few bytes follow or they mean nothing
};

// No value needs more bytes.
constexpr int maxBytes = 16;

// Always the same names in the same order. The time stamp is 32 bits of
// seconds since 1970, shown in UTC.
QVector<Value> values(const QByteArray &bytes, bool bigEndian);

} // namespace HexInspector
