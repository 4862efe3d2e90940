#include "textcodec.h"

#include <QTextCodec>

namespace {

// Qt's own GB18030 decoder, in use where Qt is built without ICU, decodes
// characters above U+FFFF wrongly and drops the byte behind half a character,
// such as a line end. So it gets complete characters up to U+FFFF only. Bytes at
// the end that begin a character are counted and left out.
QString fromGb18030(const QByteArray &bytes, int *unfinished)
{
    static const QByteArray replacement("\x84\x31\xA4\x37"); // U+FFFD
    constexpr int firstBeyond = 189000; // the number of U+10000 among those of four bytes
    QTextCodec *const codec = TextCodec::codec(TextCodec::Gb18030);
    const auto byte = [&bytes](int i) { return static_cast<uchar>(bytes.at(i)); };
    QString text;
    QByteArray plain;
    int done = 0;
    int at = 0;
    const auto flushUpTo = [&](int next) {
        plain.append(bytes.constData() + done, at - done);
        at = done = next;
    };
    *unfinished = 0;
    while (at < bytes.size()) {
        const int length = TextCodec::gb18030Length(bytes, at);
        if (length < 0) {
            *unfinished = bytes.size() - at;
            break;
        }
        if (length == 0) {
            flushUpTo(at + 1);
            plain += replacement;
        } else if (length == 4 && byte(at) >= 0x90) {
            const int number = ((byte(at) - 0x81) * 10 + byte(at + 1) - '0') * 1260 +
                               (byte(at + 2) - 0x81) * 10 + byte(at + 3) - '0';
            const uint code = static_cast<uint>(number - firstBeyond) + 0x10000;
            flushUpTo(at + 4);
            text += codec->toUnicode(plain);
            text += code <= QChar::LastValidCodePoint ? QString::fromUcs4(&code, 1)
                                                      : QString(QChar(QChar::ReplacementCharacter));
            plain.clear();
        } else {
            at += length;
        }
    }
    if (done == 0)
        return codec->toUnicode(bytes.constData(), at);
    flushUpTo(at);
    return text + codec->toUnicode(plain);
}

// Qt's decoder of UTF-8 drops the bytes of a broken character that a chunk's end
// has cut. Here they are decoded together with the next chunk.
QString fromUtf8(const QByteArray &bytes, int *unfinished)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QString text =
        TextCodec::codec(TextCodec::Utf8)->toUnicode(bytes.constData(), bytes.size(), &state);
    *unfinished = state.remainingChars;
    return text;
}

} // namespace

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
    if (index == Utf8)
        return codec(index)->toUnicode(bytes);
    int unfinished = 0;
    return fromGb18030(bytes, &unfinished);
}

QString decodeFile(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    const QString text = codec(Utf8)->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return text;
    return decode(bytes, Gb18030);
}

int gb18030Length(const QByteArray &bytes, int at)
{
    const int left = bytes.size() - at;
    const auto isBetween = [&bytes, at](int i, uchar low, uchar high) {
        const auto byte = static_cast<uchar>(bytes.at(at + i));
        return byte >= low && byte <= high;
    };
    if (isBetween(0, 0, 0x7F))
        return 1;
    if (!isBetween(0, 0x81, 0xFE))
        return 0;
    if (left == 1)
        return -1;
    if (isBetween(1, 0x40, 0x7E) || isBetween(1, 0x80, 0xFE))
        return 2;
    if (!isBetween(1, '0', '9') || (left > 2 && !isBetween(2, 0x81, 0xFE)) ||
        (left > 3 && !isBetween(3, '0', '9')))
        return 0;
    return left > 3 ? 4 : -1;
}

} // namespace TextCodec

QString StreamDecoder::decode(const char *bytes, int size, int codecIndex)
{
    if (m_codecIndex != codecIndex) {
        reset();
        m_codecIndex = codecIndex;
    }
    const QByteArray all = m_unfinished + QByteArray::fromRawData(bytes, size);
    int unfinished = 0;
    const QString text =
        codecIndex == TextCodec::Utf8 ? fromUtf8(all, &unfinished) : fromGb18030(all, &unfinished);
    m_unfinished = all.right(unfinished);
    return text;
}

void StreamDecoder::reset()
{
    m_unfinished.clear();
}
