#pragma once

// Everything that an update does to the disk, one operation each, so that a test
// can make any of them fail. Each is durable at once, or after syncFolder() of the
// folders concerned, in the order of the calls.

#include "platform.h"

#include <functional>

class Disk
{
public:
    using Sink = std::function<bool(const char *data, std::size_t size)>;
    using Producer = std::function<bool(const Sink &sink)>;

    virtual ~Disk() = default;

    virtual std::error_code makeFolder(const std::filesystem::path &folder); // and those above it
    // A new file with the bytes that the producer passes to the sink; durable when
    // it returns. Fails where the producer does (std::errc::operation_canceled).
    virtual std::error_code writeNew(const std::filesystem::path &path, bool executable,
                                     const Producer &produce);
    virtual std::error_code move(const std::filesystem::path &from, const std::filesystem::path &to);
    virtual std::error_code syncFolder(const std::filesystem::path &folder);
    virtual std::error_code removeTree(const std::filesystem::path &folder); // as far as it goes

    std::error_code copy(const std::filesystem::path &from, const std::filesystem::path &to, bool executable);

protected:
    // For each piece of a file that is being written.
    virtual std::error_code writePiece(Platform::NewFile &file, const char *data, std::size_t size);
};
