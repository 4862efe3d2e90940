#include "textscan.h"

#include <algorithm>
#include <cstring>

namespace {

// From the rarest to the most frequent in log lines; what is not listed comes first,
// then the first bytes of longer characters, which many of them share.
constexpr char kFrequent[] = "zqjxkvwbyghpfmuldcrsnoiate0123456789 :=.,-_";

char lower(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? char(byte - 'A' + 'a') : byte;
}

char upper(char byte)
{
    return byte >= 'a' && byte <= 'z' ? char(byte - 'a' + 'A') : byte;
}

int frequency(char byte)
{
    if ((byte & 0xC0) == 0xC0)
        return 1;
    const char *found = byte == 0 ? nullptr : strchr(kFrequent, lower(byte));
    return found ? static_cast<int>(found - kFrequent) + 2 : 0;
}

} // namespace

TextScan::Needle::Needle(const QString &text, bool caseSensitive)
    : m_isCaseSensitive(caseSensitive)
{
    const bool isUsable =
        caseSensitive || std::all_of(text.begin(), text.end(), [](QChar unit) {
            return unit.unicode() < 0x80 ||
                   (!unit.isSurrogate() && unit.toCaseFolded() == unit && unit.toUpper() == unit);
        });
    if (!isUsable || text.contains(QLatin1Char('\n'))) // which lines don't have
        return;
    m_bytes = text.toUtf8();
    if (!caseSensitive)
        std::transform(m_bytes.begin(), m_bytes.end(), m_bytes.begin(), lower);
    const auto rarest = std::min_element(m_bytes.begin(), m_bytes.end(),
                                         [](char a, char b) { return frequency(a) < frequency(b); });
    m_rarest = static_cast<int>(rarest - m_bytes.begin());
}

bool TextScan::Needle::isAt(const char *at) const
{
    if (m_isCaseSensitive)
        return memcmp(at, m_bytes.constData(), size_t(m_bytes.size())) == 0;
    return std::equal(m_bytes.begin(), m_bytes.end(), at, [](char a, char b) { return a == lower(b); });
}

TextScan::TextScan(const Needle &needle, const QByteArray &bytes)
    : m_needle(needle)
    , m_bytes(bytes)
{
    m_lower.wanted = m_upper.wanted = needle.m_bytes.at(needle.m_rarest);
    if (!needle.m_isCaseSensitive)
        m_upper.wanted = upper(m_lower.wanted);
}

void TextScan::advance(Cursor *cursor, int from) const
{
    if (cursor->at >= from)
        return;
    const char *begin = m_bytes.constData();
    const void *found =
        from < m_bytes.size() ? memchr(begin + from, cursor->wanted, size_t(m_bytes.size() - from)) : nullptr;
    cursor->at = found ? static_cast<int>(static_cast<const char *>(found) - begin) : m_bytes.size();
}

int TextScan::next(int from)
{
    const int last = m_bytes.size() - m_needle.m_bytes.size(); // where it can begin
    while (from <= last) {
        advance(&m_lower, from + m_needle.m_rarest);
        if (m_upper.wanted != m_lower.wanted)
            advance(&m_upper, from + m_needle.m_rarest);
        else
            m_upper.at = m_lower.at;
        from = std::min(m_lower.at, m_upper.at) - m_needle.m_rarest;
        if (from <= last && m_needle.isAt(m_bytes.constData() + from))
            return from;
        ++from;
    }
    return -1;
}
