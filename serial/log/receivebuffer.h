#pragma once

// The newest bytes that were shown as text, which limit the display in log
// mode, and the edits that take the display from one state of them to the next.
//
// The text is always the decoding of all bytes held. Decoding 20 KB takes
// microseconds, but laying a text of that size out again for each chunk takes
// milliseconds; therefore each change is an edit of the text's two ends.

#include "bytequeue.h"

#include <QByteArray>
#include <QString>

class ReceiveBuffer
{
public:
    static constexpr int limit = 20480; // bytes held

    // How one text becomes the next: frontRemoved characters at the front give
    // way to frontInserted, backRemoved at the end to backInserted.
    struct Edit
    {
        int frontRemoved = 0;
        QString frontInserted;
        int backRemoved = 0;
        QString backInserted;
    };

    // Appends bytes and drops the oldest ones above the limit.
    void append(const QByteArray &bytes);

    // Decodes the bytes held with the codec of the index. The edit applies to
    // the text of the update before.
    Edit update(int codecIndex);

    // The text decoded last, with every line and paragraph end as "\n", so that
    // its characters stand at the same positions as in a text document.
    const QString &text() const { return m_text; }

    void clear();

    // Every line and paragraph end ("\r\n", "\r", "\n", U+2029 ...) as "\n".
    static QString withPlainLineEnds(const QString &text);

private:
    static Edit difference(const QString &before, const QString &after, int expectedShift);

    ByteQueue m_bytes;
    int m_added = 0; // bytes since the last update, up to the limit
    QString m_text;
};
