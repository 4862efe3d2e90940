#pragma once

// How the text of the send box becomes bytes: in a codec, or as hexadecimal
// digits, with or without a checksum and a line end behind it; and which text
// stands for a file's bytes. Knows no editor and no device.

#include <QByteArray>
#include <QString>

struct SendText
{
    // The most characters that a paste, a drop or a file may bring; laying out
    // more would freeze the window. Larger data belongs in a file.
    static constexpr int maxCharacters = 200 * 1000;

    struct Encoded
    {
        QByteArray bytes;
        int ignored = 0;     // characters at the end of the text that make no byte
        QString wrongEscape; // the first one, which makes no byte either
        bool hasNoByte() const { return bytes.isEmpty() && ignored > 0; }
    };

    enum LineEnd { CrLf, Lf, Cr };

    // Behind the bytes; none where they are empty.
    struct Checksum
    {
        QString name;                // of FrameChecksum; empty: none
        bool isReversed = false;     // the other byte order than the usual one
        int from = 0;                // over the bytes from this offset on
        bool isAfterLineEnd = false; // and over the line end; else before it and without
    };

    bool isHex = false;
    bool addsNewLine = false; // not behind hexadecimal text that makes no byte
    int codecIndex = 0;       // of TextCodec, where it is not hexadecimal
    LineEnd lineEnd = CrLf;
    bool hasEscapes = false; // in text: see Escapes
    Checksum checksum;

    // The text and nothing else.
    bool isPlain() const { return !hasEscapes && checksum.name.isEmpty() && lineEnd == CrLf; }

    // Nothing where an escape is wrong.
    Encoded encode(QString text) const;

    // The size up to which a file's text has at most maxCharacters.
    int maxFileBytes() const { return isHex ? maxCharacters / 3 : maxCharacters; }
    // A file's content as text. Hexadecimal: its digits where it holds nothing
    // else, and the digits of its bytes otherwise.
    QString ofFile(const QByteArray &content) const;

    // What hexadecimal text keeps of any text: digits, in pairs as they stand,
    // line ends and other white space as one space each, "0x" and separators
    // dropped. `dropped` counts characters that were neither.
    static QString hexOf(const QString &text, int *dropped);
};
