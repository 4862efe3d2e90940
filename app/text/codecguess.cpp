#include "codecguess.h"

#include <algorithm>

namespace {

// A reading is sound where nearly all of it is valid: a noisy line breaks some
// characters. Bytes of UTF-8 are often valid pairs of GB18030, but of rare characters.
constexpr double kSound = 0.97;
constexpr double kSoundCommon = 0.8;
constexpr double kUnsoundCommon = 0.65;

// Bytes of the UTF-8 character at the place: 1 to 4; 0 where there is none, -1 where
// the bytes end inside of it.
int utf8Length(const QByteArray &bytes, int at)
{
    const auto byte = [&](int i) { return static_cast<uchar>(bytes.at(at + i)); };
    const uchar first = byte(0);
    if (first < 0x80)
        return 1;
    const int length = first >= 0xC2 && first <= 0xDF   ? 2
                       : first >= 0xE0 && first <= 0xEF ? 3
                       : first >= 0xF0 && first <= 0xF4 ? 4
                                                        : 0;
    for (int i = 1; i < length; ++i) {
        if (at + i >= bytes.size())
            return -1;
        if (byte(i) < 0x80 || byte(i) > 0xBF)
            return 0;
    }
    const bool isTooLong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
    const bool isNoCharacter = (first == 0xED && byte(1) > 0x9F) || (first == 0xF4 && byte(1) > 0x8F);
    return isTooLong || isNoCharacter ? 0 : length;
}

// Punctuation, full-width digits, and the 3755 characters of level 1 in GB 2312.
bool isCommonPair(const QByteArray &bytes, int at)
{
    const auto lead = static_cast<uchar>(bytes.at(at));
    const auto trail = static_cast<uchar>(bytes.at(at + 1));
    const bool isSign = (lead == 0xA1 || lead == 0xA3) && trail <= 0xBF;
    const bool isDegree = lead == 0xA1 && trail == 0xE6; // centigrade
    return trail >= 0xA1 && (isSign || isDegree || (lead >= 0xB0 && lead <= 0xD7));
}

bool isAscii(const QByteArray &bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<uchar>(byte) < 0x80; });
}

} // namespace

void CodecGuess::add(const QByteArray &bytes)
{
    if (m_utf8.pending.isEmpty() && m_gb18030.pending.isEmpty() && isAscii(bytes))
        return;
    for (int at = 0; at < bytes.size(); at += windowBytes) {
        const QByteArray piece = bytes.mid(at, windowBytes);
        m_bytes += static_cast<int>(std::count_if(
            piece.begin(), piece.end(), [](char byte) { return static_cast<uchar>(byte) >= 0x80; }));
        addUtf8(piece);
        addGb18030(piece);
        if (m_bytes >= windowBytes)
            judge();
    }
}

void CodecGuess::addUtf8(const QByteArray &bytes)
{
    const QByteArray all = m_utf8.pending + bytes;
    int at = 0;
    while (at < all.size()) {
        const int length = utf8Length(all, at);
        if (length < 0)
            break;
        m_utf8.valid += length > 1 ? 1 : 0;
        m_utf8.invalid += length == 0 ? 1 : 0;
        at += qMax(1, length);
    }
    m_utf8.pending = all.mid(at);
}

void CodecGuess::addGb18030(const QByteArray &bytes)
{
    const QByteArray all = m_gb18030.pending + bytes;
    int at = 0;
    while (at < all.size()) {
        const int length = TextCodec::gb18030Length(all, at);
        if (length < 0)
            break;
        m_gb18030.valid += length > 1 ? 1 : 0;
        m_gb18030.common += length == 2 && isCommonPair(all, at) ? 1 : 0;
        m_gb18030.invalid += length == 0 ? 1 : 0;
        at += qMax(1, length);
    }
    m_gb18030.pending = all.mid(at);
}

void CodecGuess::judge()
{
    const bool isUtf8 = m_utf8.validShare() >= kSound;
    const bool isGb18030 = m_gb18030.validShare() >= kSound && m_gb18030.commonShare() >= kSoundCommon;
    const bool isNoGb18030 = m_gb18030.validShare() < kSound || m_gb18030.commonShare() < kUnsoundCommon;
    m_verdict.reset();
    if (isUtf8 && isNoGb18030)
        m_verdict = TextCodec::Utf8;
    else if (!isUtf8 && isGb18030)
        m_verdict = TextCodec::Gb18030;
    for (Reading *reading : {&m_utf8, &m_gb18030})
        *reading = {reading->pending};
    m_bytes = 0;
}

void CodecGuess::cut()
{
    m_utf8.pending.clear();
    m_gb18030.pending.clear();
}

void CodecGuess::clear()
{
    *this = CodecGuess();
}
