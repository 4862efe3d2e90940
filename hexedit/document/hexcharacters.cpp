#include "hexcharacters.h"

#include "textcodec.h"

#include <QStringList>
#include <algorithm>

namespace HexCharacters {

namespace {

constexpr int kLongest = 4; // bytes of a character, in either codec
constexpr qint64 kPage = 4096;

bool isBetween(quint8 byte, quint8 low, quint8 high)
{
    return byte >= low && byte <= high;
}

// A byte that is never part of a longer character.
bool standsAlone(quint8 byte)
{
    return byte < 0x30 || isBetween(byte, 0x3A, 0x3F) || byte == 0x7F || byte == 0xFF;
}

// A place before the address from which decoding leads to the right characters.
// UTF-8: no character is longer. GB18030: bytes don't show whether they begin
// one, but behind a byte that stands alone one begins. Without such a byte in
// the address's page of 4 KB and the page before, it is where that one begins:
// a place that all rows of the page have in common.
qint64 placeBefore(const HexDocument &document, qint64 address, int codec)
{
    if (codec != TextCodec::Gb18030)
        return std::max<qint64>(0, address - (kLongest - 1));
    const qint64 begin = std::max<qint64>(0, address / kPage * kPage - kPage);
    const QByteArray before = document.read(begin, static_cast<int>(address - begin));
    const auto found = std::find_if(before.rbegin(), before.rend(),
                                    [](char byte) { return standsAlone(static_cast<quint8>(byte)); });
    return found == before.rend() ? begin : address - (found - before.rbegin());
}

// Bytes of the character at the place, 1 where no longer one is there.
int utf8Length(const QByteArray &bytes, int at)
{
    const auto byte = [&](int i) {
        return at + i < bytes.size() ? static_cast<quint8>(bytes.at(at + i)) : 0;
    };
    const int lead = byte(0);
    const int length = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
    // Of all codes, those too short for their length, of surrogates and beyond Unicode are none.
    const quint8 low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const quint8 high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    for (int i = 1; i < length; ++i)
        if (!isBetween(static_cast<quint8>(byte(i)), i == 1 ? low : 0x80, i == 1 ? high : 0xBF))
            return 1;
    return length;
}

int lengthOf(const QByteArray &bytes, int at, int codec)
{
    return codec == ascii             ? 1
           : codec == TextCodec::Utf8 ? utf8Length(bytes, at)
                                      : std::max(1, TextCodec::gb18030Length(bytes, at));
}

// A character of several bytes.
struct Longer
{
    int place; // of its first byte in the cells
    QByteArray bytes;
    bool common;
};

// Most pairs of bytes are a character in GB18030, and most of these are rare
// ones. GB 2312's punctuation and its 3755 most used characters are common.
bool isCommon(const QByteArray &bytes, int at, int length, int codec)
{
    const auto lead = static_cast<quint8>(bytes.at(at));
    return codec != TextCodec::Gb18030 ||
           (length == 2 && (isBetween(lead, 0xA1, 0xA3) || isBetween(lead, 0xB0, 0xD7)) &&
            static_cast<quint8>(bytes.at(at + 1)) >= 0xA1);
}

// A rare character stands beside a common one in a text; alone, it is bytes of
// something else.
void dropChance(std::vector<Longer> &longer)
{
    const auto touch = [](const Longer &left, const Longer &right) {
        return left.place + left.bytes.size() == right.place;
    };
    std::vector<Longer> meant;
    for (size_t i = 0; i < longer.size(); ++i)
        if (longer[i].common || (i > 0 && longer[i - 1].common && touch(longer[i - 1], longer[i])) ||
            (i + 1 < longer.size() && longer[i + 1].common && touch(longer[i], longer[i + 1])))
            meant.push_back(longer[i]);
    longer.swap(meant);
}

bool canBeShown(const QString &text)
{
    const QVector<uint> codes = text.toUcs4();
    if (codes.size() != 1 || codes.first() == QChar::ReplacementCharacter || !QChar::isPrint(codes.first()))
        return false;
    switch (QChar::category(codes.first())) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

} // namespace

std::vector<QString> cells(const HexDocument &document, qint64 address, int count, int codec)
{
    const qint64 start = placeBefore(document, address, codec);
    const int skipped = static_cast<int>(address - start);
    count = static_cast<int>(std::min<qint64>(count, document.size() - address));
    // With one character more on either side.
    const QByteArray bytes = document.read(start, skipped + count + 2 * kLongest - 1);
    std::vector<QString> cells(static_cast<size_t>(count), QStringLiteral("."));
    std::vector<Longer> longer;
    for (int at = 0; at < std::min(bytes.size(), skipped + count + kLongest);) {
        const int length = lengthOf(bytes, at, codec);
        const int place = at - skipped;
        const char byte = bytes.at(at);
        if (length > 1 && place >= -2 * kLongest)
            longer.push_back({place, bytes.mid(at, length), isCommon(bytes, at, length, codec)});
        else if (length == 1 && place >= 0 && place < count && byte >= 0x20 && byte < 0x7F)
            cells[static_cast<size_t>(place)] = QLatin1Char(byte);
        at += length;
    }
    dropChance(longer);

    // All are decoded at once, a line each.
    QByteArray lines;
    for (const Longer &character : longer)
        lines += character.bytes + '\n';
    const QStringList texts = TextCodec::decode(lines, codec).split(QLatin1Char('\n'));
    for (size_t i = 0; i < longer.size(); ++i) {
        const QString text = texts.value(static_cast<int>(i));
        if (!canBeShown(text))
            continue;
        const int first = longer[i].place;
        const int length = longer[i].bytes.size();
        for (int at = std::max(first, 0); at < std::min(first + length, count); ++at)
            cells[static_cast<size_t>(at)] = at == first ? text : QString();
    }
    return cells;
}

} // namespace HexCharacters
