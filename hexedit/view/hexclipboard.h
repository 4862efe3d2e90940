#pragma once

// Copying from and pasting into the content of the editor: exact bytes for this
// program, text for others. Long text is converted as work of the editor's task.

#include "hexclip.h"
#include "hexcontent.h"

#include <functional>

class SlicedTask;

class HexClipboard
{
public:
    HexClipboard(HexContent *content, SlicedTask *task);

    // The selection. False where nothing was copied, which it shows.
    bool copy(HexClip::As as) const;
    void copyAs(HexCopyText::Form form) const;

    // Calls put() with the selection and the bytes for it, perhaps later; where
    // they can't be pasted, it shows why.
    using Put = std::function<void(qint64 anchor, qint64 caret, const QByteArray &bytes)>;
    void paste(const Put &put) const;

private:
    bool isTooLong() const;

    HexContent *m_content;
    SlicedTask *m_task;
};
