#pragma once

// Bytes as text for other places: source code, mails, notes. All forms but the
// dump lead back to the same bytes.

#include "hexaddressmap.h"

#include <QByteArray>
#include <QString>

namespace HexCopyText {

enum class Form {
    CArray,  // static const uint8_t data[16] = {...};
    Python,  // data = bytes.fromhex(...)
    Base64,  // of RFC 4648, in one line
    HexDump, // address, 16 bytes, ASCII, in rows as the editor shows them
};

// The runs say at which addresses the bytes are; only the dump needs them.
QString text(const QByteArray &bytes, Form form, const HexRuns &runs);

} // namespace HexCopyText
