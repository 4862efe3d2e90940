#include "package.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t kMaxPath = 180; // Windows has 260 for folder and path together

// Number of bytes of the character at that offset; 0 where it is not valid.
std::size_t characterSize(const std::string &text, std::size_t at)
{
    const auto byte = [&text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(at);
    if (first < 0x80)
        return 1;
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    for (std::size_t i = 1; i < size; ++i)
        if ((byte(at + i) & 0xC0) != 0x80)
            return 0;
    const unsigned second = byte(at + 1); // overlong form, surrogate, above U+10FFFF
    const bool wrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                       (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return wrong ? 0 : size;
}

bool hasPlainCharacters(const std::string &text)
{
    static const std::string meaningful = "<>:\"|?*\\";
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t size = characterSize(text, at);
        const char c = text[at];
        if (size == 0 || (size == 1 && (static_cast<unsigned char>(c) < 0x20 || c == 0x7F ||
                                        meaningful.find(c) != std::string::npos)))
            return false;
        at += size;
    }
    return true;
}

// Windows opens a device for these names, with any suffix.
bool isDevice(const std::string &part)
{
    static const std::array<const char *, 6> devices{"con", "prn", "aux", "nul", "conin$", "conout$"};
    static const std::array<const char *, 3> superscripts{"\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};
    std::string stem = PackageNames::folded(part.substr(0, part.find('.')));
    stem.erase(stem.find_last_not_of(' ') + 1);
    if (std::find(devices.begin(), devices.end(), stem) != devices.end())
        return true;
    if (stem.rfind("com", 0) != 0 && stem.rfind("lpt", 0) != 0)
        return false;
    const std::string number = stem.substr(3);
    return (number.size() == 1 && number[0] >= '0' && number[0] <= '9') ||
           std::find(superscripts.begin(), superscripts.end(), number) != superscripts.end();
}

bool isSafePart(const std::string &part)
{
    // "." and ".." end in a dot; Windows drops dots and blanks at the end.
    return !part.empty() && part.back() != '.' && part.back() != ' ' && !isDevice(part);
}

} // namespace

bool PackageNames::isSafe(const std::string &path)
{
    if (path.empty() || path.size() > kMaxPath || !hasPlainCharacters(path))
        return false;
    std::size_t begin = 0;
    while (begin <= path.size()) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (!isSafePart(path.substr(begin, end - begin)))
            return false;
        begin = end + 1;
    }
    return true;
}

std::string PackageNames::folded(const std::string &path)
{
    std::string result = path;
    for (char &c : result)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return result;
}
