#pragma once

// Text codec helpers: which codec a codec index means, encoding user text and
// decoding received bytes. Bytes in, text out; the index is passed in.

#include <QByteArray>
#include <QString>

class QTextCodec;

namespace TextCodec {

enum Index { Utf8 = 0, Gb18030 = 1 };

// "UTF-8" for index 0, "GB18030" for 1 and anything else.
QByteArray name(int index);
QTextCodec *codec(int index);

QByteArray encode(const QString &text, int index);

// Decodes a whole byte sequence; bytes that are no character become a replacement
// character. Half a GB18030 character at the end is left out.
QString decode(const QByteArray &bytes, int index);

// Text of a file whose encoding is not known: UTF-8 where the bytes are valid
// UTF-8 (a byte order mark is dropped), GB18030 otherwise.
QString decodeFile(const QByteArray &bytes);

// Bytes of the GB18030 character at the place: 1, 2 or 4; 0 where there is none,
// -1 where the bytes end inside of it.
int gb18030Length(const QByteArray &bytes, int at);

} // namespace TextCodec

// Decodes a byte stream that arrives in chunks: the bytes of a character that
// is cut by the end of a chunk are kept until the next one.
class StreamDecoder
{
public:
    // Decodes the next chunk. A codec index other than the last one's starts
    // afresh; bytes kept from before are dropped.
    QString decode(const char *bytes, int size, int codecIndex);
    void reset();

private:
    QByteArray m_unfinished; // of the character that the last chunk cut
    int m_codecIndex = -1;
};
