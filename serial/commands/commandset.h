#pragma once

// A set of commands as the bytes of a file: CSV with a row of titles (UTF-8 with a byte
// order mark, which spreadsheets want; read as GB18030 where it is no UTF-8), and the form
// of the list of rows, "index#text" a line, which holds the texts alone.

#include "command.h"

#include <QVector>

namespace CommandSet {

constexpr int maxCommands = 10000;

struct Read
{
    QVector<Command> commands;
    QString fault; // why the file is no set, for the user; nothing is read then
};

QByteArray toCsv(const QVector<Command> &commands);
// Columns by their titles, in any order; one that is missing has its usual value. A
// value that is impossible makes the file no set, by its line.
Read fromCsv(const QByteArray &file);

QByteArray toList(const QVector<Command> &commands);
Read fromList(const QByteArray &file);

} // namespace CommandSet
