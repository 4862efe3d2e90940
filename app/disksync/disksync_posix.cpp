#include "disksync.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

std::error_code DiskSync::flush(const std::filesystem::path &path)
{
    const auto lastError = [] { return std::error_code(errno, std::generic_category()); };
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return lastError();
    // Some file systems have nothing to do here and say EINVAL.
    const std::error_code error = ::fsync(file) == 0 || errno == EINVAL ? std::error_code() : lastError();
    ::close(file);
    return error;
}
