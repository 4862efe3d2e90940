#pragma once

// Text codec helpers: which codec a codec index means, encoding user text and
// decoding received bytes. Bytes in, text out; the index is passed in.

#include <QByteArray>
#include <QString>
#include <memory>

class QTextCodec;
class QTextDecoder;

namespace TextCodec {

enum Index { Utf8 = 0, Gb18030 = 1 };

// "UTF-8" for index 0, "GB18030" for 1 and anything else.
QByteArray name(int index);
QTextCodec *codec(int index);

QByteArray encode(const QString &text, int index);

// Decodes a whole byte sequence, incomplete characters included (they become
// replacement characters or are dropped, as the codec does it).
QString decode(const QByteArray &bytes, int index);

// Text of a file whose encoding is not known: UTF-8 where the bytes are valid
// UTF-8 (a byte order mark is dropped), GB18030 otherwise.
QString decodeFile(const QByteArray &bytes);

} // namespace TextCodec

// Decodes a byte stream that arrives in chunks: the bytes of a character that
// is cut by the end of a chunk are kept until the next one.
class StreamDecoder
{
public:
    StreamDecoder();
    ~StreamDecoder();

    // Decodes the next chunk. A codec index other than the last one's starts
    // afresh; bytes kept from before are dropped.
    QString decode(const char *bytes, int size, int codecIndex);
    void reset();

private:
    QString decodeUtf8(const QByteArray &chunk);

    std::unique_ptr<QTextDecoder> m_decoder; // GB18030
    QByteArray m_unfinished;                 // UTF-8: of the character that the last chunk cut
    int m_codecIndex = -1;
};
