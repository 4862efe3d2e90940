#pragma once

// Turns what the user types for a value of HexInspector into bytes of the same
// length: exactly, or not at all.

#include <QByteArray>
#include <QString>

namespace HexValueInput {

struct Input
{
    QByteArray bytes; // what replaces the first of the present bytes
    QString fault;    // for the user; empty where the bytes are right
};

// index: the value's place in HexInspector::values(). present: the bytes there,
// at most HexInspector::maxBytes. Integers are decimal or, with "0x", the bits;
// a character must be as long as the present one; the time is UTC.
Input read(int index, const QString &text, bool bigEndian, const QByteArray &present);

} // namespace HexValueInput
