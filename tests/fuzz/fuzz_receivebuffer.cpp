// The log display's buffer, fed in pieces: the edits lead to the same text as
// decoding all that is held, and the bound is kept. The first byte chooses the
// codec, each 0xFE ends a piece.

#include "receivebuffer.h"
#include "textcodec.h"

#include <QList>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const int codec = data[0] & 1;
    const QByteArray all =
        QByteArray(reinterpret_cast<const char *>(data) + 1, static_cast<int>(size) - 1).left(200);
    QList<QByteArray> pieces = all.split('\xFE');
    // Repeated, so that the bound is reached with inputs of a few bytes.
    if (data[0] & 2 && !all.isEmpty())
        pieces.prepend(all.repeated(ReceiveBuffer::limit / all.size()));
    ReceiveBuffer buffer;
    QByteArray held;
    QString shown;
    for (const QByteArray &piece : qAsConst(pieces)) {
        buffer.append(piece);
        const ReceiveBuffer::Edit edit = buffer.update(codec);
        const int kept = shown.size() - edit.frontRemoved - edit.backRemoved;
        if (kept < 0)
            abort();
        shown = edit.frontInserted + shown.mid(edit.frontRemoved, kept) + edit.backInserted;
        held = (held + piece).right(ReceiveBuffer::limit);
        if (shown != ReceiveBuffer::withPlainLineEnds(TextCodec::decode(held, codec)))
            abort();
    }
    return 0;
}
