#include "app/textcodec.h"

#include <QTextCodec>
#include <QTextDecoder>

namespace TextCodec {

QByteArray name(int index)
{
    return index == Utf8 ? QByteArrayLiteral("UTF-8") : QByteArrayLiteral("GB18030");
}

QTextCodec *codec(int index)
{
    return QTextCodec::codecForName(name(index));
}

QByteArray encode(const QString &text, int index)
{
    return codec(index)->fromUnicode(text);
}

QString decode(const QByteArray &bytes, int index)
{
    return codec(index)->toUnicode(bytes);
}

QString decodeFile(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    const QString text = codec(Utf8)->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return text;
    return codec(Gb18030)->toUnicode(bytes);
}

} // namespace TextCodec

StreamDecoder::StreamDecoder() = default;
StreamDecoder::~StreamDecoder() = default;

QString StreamDecoder::decode(const char *bytes, int size, int codecIndex)
{
    if (m_codecIndex != codecIndex) {
        reset();
        m_codecIndex = codecIndex;
    }
    if (codecIndex == TextCodec::Utf8)
        return decodeUtf8(QByteArray(bytes, size));
    if (!m_decoder)
        m_decoder.reset(TextCodec::codec(codecIndex)->makeDecoder(QTextCodec::IgnoreHeader));
    return m_decoder->toUnicode(bytes, size);
}

// Qt's own UTF-8 decoder forgets the bytes of a broken character that a chunk
// end has cut: nothing is shown for them. Here they are decoded together with
// what follows.
QString StreamDecoder::decodeUtf8(const QByteArray &chunk)
{
    const QByteArray bytes = m_unfinished + chunk;
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QString text =
        TextCodec::codec(TextCodec::Utf8)->toUnicode(bytes.constData(), bytes.size(), &state);
    m_unfinished = bytes.right(state.remainingChars);
    return text;
}

void StreamDecoder::reset()
{
    m_decoder.reset();
    m_unfinished.clear();
}
