#include "disksync.h"

#include <windows.h>

std::error_code DiskSync::flush(const std::filesystem::path &path)
{
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return {}; // a virus scanner may hold it; the data are written all the same
    const DWORD error = ::FlushFileBuffers(file) ? ERROR_SUCCESS : ::GetLastError();
    ::CloseHandle(file);
    // NTFS writes its changes of names to a log in their order; flushing a
    // folder is refused here and there.
    std::error_code ignored;
    const bool matters = error != ERROR_SUCCESS && error != ERROR_INVALID_FUNCTION &&
                         error != ERROR_NOT_SUPPORTED && !std::filesystem::is_directory(path, ignored);
    return matters ? std::error_code(static_cast<int>(error), std::system_category()) : std::error_code();
}
