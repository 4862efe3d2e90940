#pragma once

// Finds a text in UTF-8 bytes without decoding them. With case ignored only ASCII
// letters have two forms.

#include <QByteArray>
#include <QString>

class TextScan
{
public:
    class Needle
    {
    public:
        Needle() = default;
        Needle(const QString &text, bool caseSensitive);

        // Not where it has other letters of two cases.
        bool isUsable() const { return !m_bytes.isEmpty(); }

    private:
        friend class TextScan;

        bool isAt(const char *at) const;

        QByteArray m_bytes; // in lower case where case is ignored
        bool m_isCaseSensitive = true;
        int m_rarest = 0; // index of the byte to look for
    };

    // Both outlive the scan.
    TextScan(const Needle &needle, const QByteArray &bytes);

    // The first occurrence that begins at `from` or later; -1 where there is none.
    // From call to call, `from` may only grow.
    int next(int from);

private:
    // The next one of the rarest byte in one of its cases.
    struct Cursor
    {
        char wanted = 0;
        int at = -1;
    };

    void advance(Cursor *cursor, int from) const;

    const Needle &m_needle;
    const QByteArray &m_bytes;
    Cursor m_lower;
    Cursor m_upper;
};
