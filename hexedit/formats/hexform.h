#pragma once

// In which form a file holds its bytes: as they are, or as records of text
// that say at which address they belong.

#include <QByteArray>
#include <QString>

enum class HexForm { Bytes, IntelHex, SRecord };

namespace HexForms {

// By the beginning of a file: its first line that is not blank is a record. A
// name of the form's own also admits a first record whose checksum is wrong.
HexForm ofContent(const QByteArray &beginning, const QString &fileName);

// By the name that a file shall have; Bytes for all names of no form.
HexForm ofName(const QString &fileName);

// "Intel HEX", "S-record"; empty for bytes.
QString name(HexForm form);

} // namespace HexForms
