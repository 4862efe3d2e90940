#pragma once

// Brings to the disk what the system still holds in memory. One implementation
// for each kind of system; knows no Qt, because the unpacker uses it too.

#include <filesystem>
#include <system_error>

namespace DiskSync {

// Returns when the bytes of a file, or the names in a folder, are on the disk,
// which may take seconds. No error where the file system has no such thing.
std::error_code flush(const std::filesystem::path &path);

} // namespace DiskSync
