#include "zipreader.h"

#include <algorithm>
#include <array>
#include <zlib.h>

namespace {

constexpr std::uint32_t kEntrySignature = 0x04034b50;
constexpr std::uint32_t kDirectorySignature = 0x02014b50;
constexpr std::uint32_t kEndSignature = 0x06054b50;
constexpr std::size_t kEntryHeader = 30;
constexpr std::size_t kDirectoryHeader = 46;
constexpr std::size_t kEndHeader = 22;
constexpr std::size_t kMaxDirectoryBytes = std::size_t{16} * 1024 * 1024;
constexpr std::size_t kPiece = 65536;

constexpr std::uint16_t kEncryptedFlags = 1 | 1 << 6 | 1 << 13;
constexpr std::uint16_t kSizesBehindFlag = 1 << 3;
constexpr std::uint16_t kPatchFlag = 1 << 5;
constexpr std::uint16_t kStored = 0;
constexpr std::uint16_t kDeflated = 8;
constexpr std::uint16_t kAes = 99;

const char *const kDamaged = "升级包已损坏";
const char *const kUnsupported = "不支持的压缩格式";

std::uint16_t u16(const std::string &bytes, std::size_t at)
{
    return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) |
                                      static_cast<unsigned char>(bytes[at + 1]) << 8);
}

std::uint32_t u32(const std::string &bytes, std::size_t at)
{
    return u16(bytes, at) | static_cast<std::uint32_t>(u16(bytes, at + 2)) << 16;
}

bool fail(std::string &problem, const std::string &text)
{
    problem = text;
    return false;
}

} // namespace

bool ZipEntry::isSpecial() const
{
    const std::uint32_t type = unixMode & 0170000;
    return reparsePoint || (type != 0 && type != (isFolder() ? 0040000U : 0100000U));
}

bool ZipReader::read(std::uint64_t at, std::size_t size, std::string &bytes)
{
    if (at > m_size || size > m_size - at)
        return false;
    bytes.resize(size);
    m_source.clear();
    m_source.seekg(static_cast<std::streamoff>(at));
    m_source.read(bytes.data(), static_cast<std::streamsize>(size));
    return m_source.good();
}

bool ZipReader::open(std::string &problem)
{
    m_entries.clear();
    m_source.clear();
    m_source.seekg(0, std::ios::end);
    const auto size = static_cast<std::streamoff>(m_source.tellg());
    m_size = size < 0 ? 0 : static_cast<std::uint64_t>(size);
    if (m_size > kMaxBytes)
        return fail(problem, "升级包过大");

    std::uint64_t end = 0;
    std::size_t count = 0;
    std::string directory;
    if (!findDirectory(end, count, problem))
        return false;
    if (!read(m_directoryAt, static_cast<std::size_t>(end - m_directoryAt), directory))
        return fail(problem, kDamaged);
    return parseDirectory(directory, count, problem) && checkHeaders(problem);
}

// The end record is the last in the file, except for its own comment.
bool ZipReader::findDirectory(std::uint64_t &end, std::size_t &count, std::string &problem)
{
    const auto tail = static_cast<std::size_t>(std::min<std::uint64_t>(m_size, kEndHeader + 0xFFFF));
    std::string bytes;
    if (tail < kEndHeader || !read(m_size - tail, tail, bytes))
        return fail(problem, "升级包不是ZIP文件");
    std::size_t at = tail - kEndHeader + 1;
    do {
        --at;
    } while (at > 0 && !(u32(bytes, at) == kEndSignature && u16(bytes, at + 20) == tail - kEndHeader - at));
    if (u32(bytes, at) != kEndSignature || u16(bytes, at + 20) != tail - kEndHeader - at)
        return fail(problem, "升级包不是ZIP文件");

    end = m_size - tail + at;
    count = u16(bytes, at + 10);
    const std::uint32_t size = u32(bytes, at + 12);
    m_directoryAt = u32(bytes, at + 16);
    if (count == 0xFFFF || size == 0xFFFFFFFF || m_directoryAt == 0xFFFFFFFF || u32(bytes, at + 4) != 0)
        return fail(problem, kUnsupported); // ZIP64, or in several volumes
    if (u16(bytes, at + 8) != count || m_directoryAt + size != end)
        return fail(problem, kDamaged);
    if (count > kMaxEntries || size > kMaxDirectoryBytes)
        return fail(problem, "升级包中的文件过多");
    return true;
}

bool ZipReader::parseDirectory(const std::string &directory, std::size_t count, std::string &problem)
{
    std::size_t at = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (directory.size() - at < kDirectoryHeader || u32(directory, at) != kDirectorySignature)
            return fail(problem, kDamaged);
        const std::size_t nameSize = u16(directory, at + 28);
        const std::size_t recordSize =
            kDirectoryHeader + nameSize + u16(directory, at + 30) + u16(directory, at + 32);
        if (directory.size() - at < recordSize)
            return fail(problem, kDamaged);
        ZipEntry entry;
        const unsigned madeBy = u16(directory, at + 4) >> 8;
        const std::uint32_t attributes = u32(directory, at + 38);
        entry.flags = u16(directory, at + 8);
        entry.method = u16(directory, at + 10);
        entry.crc = u32(directory, at + 16);
        entry.packed = u32(directory, at + 20);
        entry.size = u32(directory, at + 24);
        entry.unixMode = madeBy == 3 || madeBy == 19 ? attributes >> 16 : 0; // Unix, OS X
        entry.reparsePoint = (attributes & 0x400) != 0;
        entry.at = u32(directory, at + 42);
        entry.name = directory.substr(at + kDirectoryHeader, nameSize);
        if ((entry.flags & kEncryptedFlags) != 0 || entry.method == kAes)
            return fail(problem, "升级包已加密");
        if ((entry.method != kStored && entry.method != kDeflated) || (entry.flags & kPatchFlag) != 0 ||
            u16(directory, at + 34) != 0 || entry.packed == 0xFFFFFFFF || entry.size == 0xFFFFFFFF)
            return fail(problem, kUnsupported);
        if (entry.method == kStored && entry.packed != entry.size)
            return fail(problem, kDamaged);
        m_entries.push_back(entry);
        at += recordSize;
    }
    return at == directory.size() || fail(problem, kDamaged);
}

// The header before each entry must agree with the directory, and no entry may
// overlap another one or the directory.
bool ZipReader::checkHeaders(std::string &problem)
{
    std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges; // of bytes
    for (ZipEntry &entry : m_entries) {
        std::string header;
        std::string name;
        if (!read(entry.at, kEntryHeader, header) || u32(header, 0) != kEntrySignature ||
            !read(entry.at + kEntryHeader, u16(header, 26), name))
            return fail(problem, kDamaged);
        const bool sizesBehind = (entry.flags & kSizesBehindFlag) != 0;
        const auto agrees = [&header, sizesBehind](std::size_t at, std::uint32_t value) {
            return u32(header, at) == value || (sizesBehind && u32(header, at) == 0);
        };
        if (name != entry.name || u16(header, 6) != entry.flags || u16(header, 8) != entry.method ||
            !agrees(14, entry.crc) || !agrees(18, entry.packed) || !agrees(22, entry.size))
            return fail(problem, kDamaged);
        entry.data = entry.at + kEntryHeader + name.size() + u16(header, 28);
        ranges.emplace_back(entry.at, entry.data + entry.packed);
    }
    std::sort(ranges.begin(), ranges.end());
    std::uint64_t end = 0;
    for (const auto &range : ranges) {
        if (range.first < end)
            return fail(problem, kDamaged);
        end = range.second;
    }
    return end <= m_directoryAt || fail(problem, kDamaged);
}

bool ZipReader::extract(const ZipEntry &entry, const Sink &sink, std::string &problem)
{
    uLong crc = crc32(0, nullptr, 0);
    std::uint64_t handedOut = 0;
    bool refused = false;
    const Sink counting = [&](const char *data, std::size_t size) {
        handedOut += size;
        if (handedOut > entry.size)
            return false;
        crc = crc32(crc, reinterpret_cast<const Bytef *>(data), static_cast<uInt>(size));
        refused = !sink(data, size);
        return !refused;
    };
    const bool done = entry.method == kStored ? copyEntry(entry, counting) : inflateEntry(entry, counting);
    if (refused)
        return false; // the sink has reported why
    return (done && handedOut == entry.size && crc == entry.crc) ||
           fail(problem, std::string(kDamaged) + "：" + entry.name);
}

bool ZipReader::copyEntry(const ZipEntry &entry, const Sink &sink)
{
    std::string piece;
    for (std::uint64_t at = 0; at < entry.packed; at += piece.size()) {
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, entry.packed - at));
        if (!read(entry.data + at, size, piece) || !sink(piece.data(), piece.size()))
            return false;
    }
    return true;
}

bool ZipReader::inflateEntry(const ZipEntry &entry, const Sink &sink)
{
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return false;
    std::array<char, kPiece> out{};
    std::string piece;
    std::uint64_t at = 0;
    int state = Z_OK;
    bool isWanted = true;
    while (isWanted && state == Z_OK) {
        if (stream.avail_in == 0) {
            const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, entry.packed - at));
            if (size == 0 || !read(entry.data + at, size, piece))
                break;
            at += size;
            stream.next_in = reinterpret_cast<Bytef *>(piece.data());
            stream.avail_in = static_cast<uInt>(size);
        }
        stream.next_out = reinterpret_cast<Bytef *>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        state = inflate(&stream, Z_NO_FLUSH);
        const std::size_t made = out.size() - stream.avail_out;
        isWanted = made == 0 || sink(out.data(), made);
    }
    const bool isComplete = isWanted && state == Z_STREAM_END && at == entry.packed && stream.avail_in == 0;
    inflateEnd(&stream);
    return isComplete;
}
