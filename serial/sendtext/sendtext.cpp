#include "sendtext.h"

#include "escapes.h"
#include "framechecksum.h"
#include "hextext.h"
#include "textcodec.h"

#include <algorithm>
#include <optional>

namespace {

constexpr const char *kLineEnds[] = {"\x0D\x0A", "\x0A", "\x0D"};

QByteArray sumOf(const SendText::Checksum &checksum, const QByteArray &bytes)
{
    std::optional<FrameChecksum> sum = FrameChecksum::named(checksum.name);
    if (!sum)
        return {};
    sum->add(bytes.mid(checksum.from));
    QByteArray result = sum->bytes();
    if (checksum.isReversed)
        std::reverse(result.begin(), result.end());
    return result;
}

bool isSeparator(QChar character)
{
    const ushort code = character.unicode();
    return character.isSpace() || code == ',' || code == ';' || code == ':';
}

bool isPrefix(const QString &text, int at)
{
    return text.at(at) == QLatin1Char('0') && at + 1 < text.size() &&
           (text.at(at + 1) == QLatin1Char('x') || text.at(at + 1) == QLatin1Char('X'));
}

} // namespace

SendText::Encoded SendText::encode(QString text) const
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    Encoded encoded;
    if (isHex) {
        const HexText::Parsed parsed = HexText::parse(text);
        encoded.bytes = parsed.bytes;
        encoded.ignored = parsed.ignored;
    } else if (hasEscapes) {
        encoded.bytes = Escapes::encode(text, codecIndex, &encoded.wrongEscape);
        if (!encoded.wrongEscape.isEmpty())
            return encoded;
    } else {
        encoded.bytes = TextCodec::encode(text, codecIndex);
    }
    const bool isSummed = !encoded.bytes.isEmpty() && !checksum.name.isEmpty();
    if (isSummed && !checksum.isAfterLineEnd)
        encoded.bytes += sumOf(checksum, encoded.bytes);
    if (addsNewLine && !(isHex && encoded.bytes.isEmpty()))
        encoded.bytes += kLineEnds[lineEnd];
    if (isSummed && checksum.isAfterLineEnd)
        encoded.bytes += sumOf(checksum, encoded.bytes);
    return encoded;
}

QString SendText::ofFile(const QByteArray &content) const
{
    const QString text = TextCodec::decodeFile(content);
    if (!isHex)
        return text;
    int dropped = 0;
    const QString digits = hexOf(text, &dropped);
    return dropped == 0 ? digits : HexText::render(content);
}

QString SendText::hexOf(const QString &text, int *dropped)
{
    QString kept;
    kept.reserve(text.size());
    *dropped = 0;
    const auto addSpace = [&kept] {
        if (!kept.isEmpty() && !kept.endsWith(QLatin1Char(' ')))
            kept += QLatin1Char(' ');
    };
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (isPrefix(text, i)) {
            addSpace();
            ++i;
        } else if (HexText::isDigit(character)) {
            kept += character;
        } else if (isSeparator(character)) {
            addSpace();
        } else {
            ++*dropped;
        }
    }
    return kept;
}
