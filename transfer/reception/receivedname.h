#pragma once

// Which name in a folder a file gets whose name was sent by a peer: plain, of one
// file, possible on every system, and of no file that exists.

#include <QByteArray>
#include <QString>

namespace ReceivedName {

// Without its path, without characters that mean something to a system or
// change the direction of text, and of a limited length. UTF-8 where the bytes are
// valid UTF-8, GB18030 otherwise. Empty where nothing is left of the name.
QString plain(const QByteArray &sent);

// "a.bin", "a (2).bin" for number 2 ...
QString numbered(const QString &name, int number);

// Of a file that is not complete.
QString incomplete(const QString &name);

} // namespace ReceivedName
