#pragma once

// The files that an archive may bring into an installation. Checks the complete
// archive before anything is written. Paths are UTF-8, relative, with '/'. A name
// that is harmless on one system and not on another is refused on both.

#include "zipreader.h"

#include <cstdint>
#include <string>
#include <vector>

class Package
{
public:
    struct File
    {
        std::string path;
        const ZipEntry *entry;
        bool executable;
    };

    static constexpr std::uint64_t kMaxBytes = 2048ULL * 1024 * 1024; // unpacked
    // Unpacked to packed size of an entry: that of a file of equal bytes, deflated.
    // A larger ratio means a false size.
    static constexpr std::uint64_t kMaxRatio = 1032;

    // The folder that an update works in; no entry may reach into it.
    static const char *workFolder() { return "_update"; }

    // Once only. Reads every entry to its end. `executable` is the program's file name;
    // it must be in the archive, at its top or in a folder that holds all the
    // rest, which is then left out of the paths. The reader must be open, and
    // outlive this. False: `problem` says why, in Chinese.
    bool check(ZipReader &reader, const std::string &executable, std::string &problem);

    // Without folders, and without what belongs into folders of the user's
    // ("conf", "tmp", "download", "save").
    const std::vector<File> &files() const { return m_files; }
    std::uint64_t size() const { return m_size; } // of all files

private:
    std::vector<File> m_files;
    std::uint64_t m_size = 0;
};

namespace PackageNames {

// Means the same file below a folder on every system: no way out of the folder,
// no drive, device, or character with a meaning, valid UTF-8, not too long.
bool isSafe(const std::string &path);

// For comparing names regardless of case. Latin letters only: files of other
// scripts that a system regards as the same fail when they are created.
std::string folded(const std::string &path);

} // namespace PackageNames
