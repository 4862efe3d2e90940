#pragma once

// Reads a ZIP archive strictly: anything that two readers could interpret
// differently is refused. The directory at the end and the headers before the
// entries must agree, entries may not overlap, nothing is encrypted or split into
// several files. Stored and deflated entries, no ZIP64. Does not judge
// names; knows only the stream that it is given. Layout:
// PKWARE APPNOTE.TXT, sections 4.3 and 4.4.

#include <cstdint>
#include <functional>
#include <istream>
#include <string>
#include <vector>

struct ZipEntry
{
    std::string name;       // as in the archive
    std::uint64_t at = 0;   // of its header
    std::uint64_t data = 0; // of its bytes
    std::uint32_t packed = 0;
    std::uint32_t size = 0;
    std::uint32_t crc = 0;
    std::uint16_t method = 0;
    std::uint16_t flags = 0;
    std::uint32_t unixMode = 0; // type and permissions; 0 where the archive has none
    bool reparsePoint = false;  // a link of Windows

    bool isFolder() const { return !name.empty() && name.back() == '/'; }
    // Neither a file nor a folder: a link, a device, a pipe.
    bool isSpecial() const;
    bool isExecutable() const { return (unixMode & 0111) != 0; }
};

class ZipReader
{
public:
    using Sink = std::function<bool(const char *data, std::size_t size)>;

    static constexpr std::uint64_t kMaxBytes = 1024ULL * 1024 * 1024; // of the archive
    static constexpr std::size_t kMaxEntries = 20000;

    // The stream (binary, seekable) must outlive the reader.
    explicit ZipReader(std::istream &source)
        : m_source(source)
    {
    }

    // Reads the directory. False: `problem` says why, in Chinese.
    bool open(std::string &problem);
    const std::vector<ZipEntry> &entries() const { return m_entries; }

    // Passes the entry's bytes to the sink in pieces; never more than its size.
    // False, after any number of pieces, where they are damaged or the sink refuses.
    bool extract(const ZipEntry &entry, const Sink &sink, std::string &problem);

private:
    bool read(std::uint64_t at, std::size_t size, std::string &bytes);
    bool findDirectory(std::uint64_t &end, std::size_t &count, std::string &problem);
    bool parseDirectory(const std::string &directory, std::size_t count, std::string &problem);
    bool checkHeaders(std::string &problem);
    bool inflateEntry(const ZipEntry &entry, const Sink &sink);
    bool copyEntry(const ZipEntry &entry, const Sink &sink);

    std::istream &m_source;
    std::uint64_t m_size = 0;
    std::uint64_t m_directoryAt = 0;
    std::vector<ZipEntry> m_entries;
};
