#pragma once

// Escapes in text that is to be sent: \r \n \t \0 \\ and \xHH, a byte of two
// hexadecimal digits. What stands between them is encoded by itself, so that \xHH
// puts that byte among those of the text whatever the codec is.

#include <QByteArray>
#include <QString>

namespace Escapes {

// codecIndex: of TextCodec. An escape that is none of these is reported in wrong, and
// nothing is returned.
QByteArray encode(const QString &text, int codecIndex, QString *wrong);

} // namespace Escapes
