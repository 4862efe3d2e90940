#pragma once

// In which form the bytes of the editor are saved, and what the save dialog
// offers for it.

#include "heximage.h"
#include "hexoutput.h"

#include <memory>

namespace HexSaveForm {

// Name filters, the first one for what the file is now.
QString filters(const HexImage &present);

// What a file of that name is to be, where that filter was chosen. With "所有文件"
// it stays what it is, but where an image gets a name of another form.
HexImage imageFor(const QString &fileName, const QString &filter, const HexImage &present);

// The name would be read as one of another form.
bool contradicts(const QString &fileName, HexForm form);

// In the record length that was read, or that of the settings; gaps are filled
// with the byte of the settings.
std::unique_ptr<HexOutput> output(const HexDocument &document, const HexRuns &runs, const HexImage &image);

} // namespace HexSaveForm
