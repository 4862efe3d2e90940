#include "hexstrings.h"

#include <QChar>

#include <algorithm>
#include <tuple>

namespace {

constexpr qint64 kSlice = 1 << 18;

bool isShownAscii(uchar byte)
{
    return (byte >= 0x20 && byte < 0x7F) || byte == '\t';
}

} // namespace

// Follows one encoding through the bytes. A derived class says where characters begin
// and end; this one makes texts of them.
class HexStrings::Scanner
{
public:
    Scanner(int minCharacters, std::vector<Text> *texts)
        : m_minCharacters(minCharacters)
        , m_texts(texts)
    {
    }
    virtual ~Scanner() = default;
    Q_DISABLE_COPY_MOVE(Scanner)

    virtual void add(qint64 address, uchar byte) = 0;
    void end() { endText(); }

protected:
    void addCharacter(qint64 address, int length, Encoding encoding)
    {
        if (m_characters > 0 && (m_end != address || m_characters == maxLength))
            endText();
        if (m_characters == 0) {
            m_begin = address;
            m_encoding = Ascii;
        }
        if (encoding != Ascii)
            m_encoding = encoding;
        m_end = address + length;
        ++m_characters;
    }

    void endText()
    {
        if (m_characters >= m_minCharacters && m_texts->size() < maxTexts)
            m_texts->push_back({m_begin, static_cast<int>(m_end - m_begin), m_encoding});
        m_characters = 0;
    }

private:
    int m_minCharacters;
    std::vector<Text> *m_texts;
    qint64 m_begin = 0;
    qint64 m_end = 0;
    int m_characters = 0;
    Encoding m_encoding = Ascii;
};

namespace {

using Encoding = HexStrings::Encoding;
using Texts = std::vector<HexStrings::Text>;

// ASCII and, where wished, the longer characters of UTF-8.
class Utf8Scanner : public HexStrings::Scanner
{
public:
    Utf8Scanner(bool hasLong, int minCharacters, Texts *texts)
        : Scanner(minCharacters, texts)
        , m_hasLong(hasLong)
    {
    }

    void add(qint64 address, uchar byte) override
    {
        if (m_expected > 0 && (byte & 0xC0) == 0x80) {
            m_code = m_code << 6 | (byte & 0x3F);
            if (++m_length == m_expected)
                endLong(address);
            return;
        }
        if (m_expected > 0)
            endText();
        m_expected = 0;
        if (isShownAscii(byte))
            addCharacter(address, 1, HexStrings::Ascii);
        else if (m_hasLong && byte >= 0xC2 && byte < 0xF5)
            beginLong(byte);
        else
            endText();
    }

private:
    void beginLong(uchar byte)
    {
        m_expected = byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        m_length = 1;
        m_code = byte & (0x7FU >> m_expected);
    }

    void endLong(qint64 address)
    {
        static constexpr uint minOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
        const int length = m_expected;
        m_expected = 0;
        if (m_code >= minOfLength[length] && m_code <= 0x10FFFF && !QChar::isSurrogate(m_code) &&
            QChar::isPrint(m_code))
            addCharacter(address - length + 1, length, HexStrings::Utf8);
        else
            endText();
    }

    bool m_hasLong;
    int m_expected = 0; // bytes of the character that has begun
    int m_length = 0;
    uint m_code = 0;
};

// The characters of one or two bytes. Those of four are rare.
class GbScanner : public HexStrings::Scanner
{
public:
    using Scanner::Scanner;

    void add(qint64 address, uchar byte) override
    {
        const bool isSecond = m_isOpen && byte >= 0x40 && byte != 0x7F && byte != 0xFF;
        if (m_isOpen && !isSecond)
            endText();
        m_isOpen = !isSecond && byte >= 0x81 && byte != 0xFF;
        if (isSecond)
            addCharacter(address - 1, 2, HexStrings::Gb18030);
        else if (isShownAscii(byte))
            addCharacter(address, 1, HexStrings::Ascii);
        else if (!m_isOpen)
            endText();
    }

private:
    bool m_isOpen = false; // the first byte of two has come
};

// UTF-16 at even or at odd addresses.
class WideScanner : public HexStrings::Scanner
{
public:
    WideScanner(Encoding encoding, int parity, int minCharacters, Texts *texts)
        : Scanner(minCharacters, texts)
        , m_encoding(encoding)
        , m_parity(parity)
    {
    }

    void add(qint64 address, uchar byte) override
    {
        if ((address & 1) == m_parity) {
            m_first = byte;
            return;
        }
        if (address == 0)
            return;
        const uint unit =
            m_encoding == HexStrings::Utf16Le ? uint(byte) << 8 | m_first : uint(m_first) << 8 | byte;
        // Of the other characters, most come about by chance.
        const bool isCommon = (unit >= 0x20 && unit < 0x250) || (unit >= 0x2010 && unit < 0x2040) ||
                              (unit >= 0x3000 && unit < 0x3040) || (unit >= 0x4E00 && unit < 0xA000) ||
                              (unit >= 0xFF00 && unit < 0xFFF0);
        if (unit == '\t' || (isCommon && QChar::isPrint(unit)))
            addCharacter(address - 1, 2, m_encoding);
        else
            endText();
    }

private:
    Encoding m_encoding;
    int m_parity;
    uchar m_first = 0;
};

} // namespace

HexStrings::HexStrings(const HexDocument &document, int encodings, int minCharacters)
    : m_document(document)
{
    if (encodings & (Ascii | Utf8))
        m_scanners.push_back(std::make_unique<Utf8Scanner>(encodings & Utf8, minCharacters, &m_texts));
    if (encodings & Gb18030)
        m_scanners.push_back(std::make_unique<GbScanner>(minCharacters, &m_texts));
    for (const Encoding encoding : {Utf16Le, Utf16Be})
        for (const int parity : {0, 1})
            if (encodings & encoding)
                m_scanners.push_back(
                    std::make_unique<WideScanner>(encoding, parity, minCharacters, &m_texts));
}

HexStrings::~HexStrings() = default;

// What the scanners have added goes among the texts before: only a few of them, as no
// text is long.
void HexStrings::sortFrom(size_t first)
{
    const auto byPlace = [](const Text &left, const Text &right) {
        return std::tie(left.address, left.length, left.encoding) <
               std::tie(right.address, right.length, right.encoding);
    };
    const auto added = m_texts.begin() + static_cast<std::ptrdiff_t>(first);
    if (added == m_texts.end())
        return;
    std::sort(added, m_texts.end(), byPlace);
    const auto from = std::upper_bound(m_texts.begin(), added, *added, byPlace);
    std::inplace_merge(from, added, m_texts.end(), byPlace);
    // What two scanners have found alike.
    const auto isSame = [&byPlace](const Text &left, const Text &right) {
        return !byPlace(left, right) && !byPlace(right, left);
    };
    const auto before = from == m_texts.begin() ? from : std::prev(from);
    m_texts.erase(std::unique(before, m_texts.end(), isSame), m_texts.end());
}

bool HexStrings::step()
{
    const size_t known = m_texts.size();
    const qint64 end = std::min(m_at + kSlice, m_document.size());
    while (m_at < end) {
        qint64 inRow = 0;
        const char *const bytes = m_document.span(m_at, &inRow);
        inRow = std::min(inRow, end - m_at);
        for (const auto &scanner : m_scanners)
            for (qint64 i = 0; i < inRow; ++i)
                scanner->add(m_at + i, static_cast<uchar>(bytes[i]));
        m_at += inRow;
    }
    const bool isEnd = m_at >= m_document.size() || isCut();
    for (const auto &scanner : m_scanners)
        if (isEnd)
            scanner->end();
    sortFrom(known);
    return !isEnd;
}

int HexStrings::permille() const
{
    return static_cast<int>(m_at * 1000 / std::max<qint64>(m_document.size(), 1));
}

std::vector<HexStrings::Text> HexStrings::takeTexts()
{
    return std::move(m_texts);
}
