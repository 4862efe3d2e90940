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
    if (!m_decoder || m_codecIndex != codecIndex) {
        m_decoder.reset(TextCodec::codec(codecIndex)->makeDecoder());
        m_codecIndex = codecIndex;
    }
    return m_decoder->toUnicode(bytes, size);
}

void StreamDecoder::reset()
{
    m_decoder.reset();
}
