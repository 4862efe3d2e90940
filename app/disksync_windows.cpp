#include "app/disksync.h"

#include <windows.h>

std::error_code DiskSync::flush(const std::filesystem::path &path)
{
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    std::error_code error;
    if (file == INVALID_HANDLE_VALUE || !::FlushFileBuffers(file))
        error = {static_cast<int>(::GetLastError()), std::system_category()};
    if (file != INVALID_HANDLE_VALUE)
        ::CloseHandle(file);
    // NTFS writes its changes of names to a log in their order; flushing a
    // folder is refused here and there.
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored) ? std::error_code() : error;
}
