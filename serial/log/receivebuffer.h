#pragma once

// The bounded byte buffer behind the decoded log display, and the difference
// between what is shown and what is to be shown.
//
// The display's text is always the decoding of the whole buffer. Decoding
// 20 KB takes microseconds, but laying out a text of that size anew for every
// chunk takes milliseconds; therefore each change is handed out as an edit of
// the text's two ends.

#include <QByteArray>
#include <QString>

class ReceiveBuffer
{
public:
    static constexpr int limit = 20480; // bytes held

    // How the former text becomes the new one: frontRemoved characters at the
    // front give way to frontInserted, backRemoved at the end to backInserted.
    struct Edit
    {
        int frontRemoved = 0;
        QString frontInserted;
        int backRemoved = 0;
        QString backInserted;
    };

    // Appends bytes and drops the oldest ones above the limit.
    void append(const QByteArray &bytes);

    // Decodes what is held with the codec of the index. The edit makes the new
    // text of the one that the update before led to.
    Edit update(int codecIndex);

    // The text decoded last, with every line and paragraph end as "\n", so that
    // its characters stand at the same positions as in a text document.
    const QString &text() const { return m_text; }

    void clear();

    // Every line and paragraph end ("\r\n", "\r", "\n", U+2029 ...) as "\n".
    static QString withPlainLineEnds(const QString &text);

    static Edit difference(const QString &before, const QString &after, int expectedShift);

private:
    QByteArray m_bytes;
    qint64 m_added = 0; // bytes since the last update
    QString m_text;
};
