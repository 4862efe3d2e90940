#pragma once

// Escapes in text that is to be sent: \r \n \t \0 \\ and \xHH, a byte of two
// hexadecimal digits. What stands between them is encoded by itself, so that \xHH
// puts that byte among those of the text whatever the codec is.

#include <QByteArray>
#include <QString>

namespace Escapes {

// The byte of the escape whose backslash is at the place, which moves to its last
// character; -1 where there is none.
int byteAt(const QString &text, int *at);

// codecIndex: of TextCodec. An escape that is none of these is reported in wrong, and
// nothing is returned.
QByteArray encode(const QString &text, int codecIndex, QString *wrong);

} // namespace Escapes
