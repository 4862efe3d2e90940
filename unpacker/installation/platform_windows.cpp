#include "platform.h"

#ifndef UNICODE
#define UNICODE
#endif
#include <windows.h>

#include <shellapi.h>

namespace fs = std::filesystem;

namespace {

constexpr int kRetryEveryMs = 100;
constexpr int kRetries = 100; // virus scanners and indexers hold new files for a while

std::error_code lastError()
{
    return {static_cast<int>(::GetLastError()), std::system_category()};
}

HANDLE handleOf(std::intptr_t value)
{
    return reinterpret_cast<HANDLE>(value);
}

std::intptr_t valueOf(HANDLE handle)
{
    return reinterpret_cast<std::intptr_t>(handle);
}

std::wstring wide(const std::string &text)
{
    return fs::u8path(text).wstring();
}

// One argument of a command line, as CommandLineToArgvW and the C library parse it:
// quotes, and backslashes before quotes, are escaped.
std::wstring quoted(const std::wstring &argument)
{
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        if (c == L'"')
            result.append(backslashes * 2 + 1, L'\\');
        if (c == L'"')
            backslashes = 0;
        result += c;
    }
    return result.append(backslashes, L'\\') + L'"';
}

} // namespace

namespace Platform {

void prepare()
{
}

std::vector<std::string> arguments(int, char **)
{
    int count = 0;
    LPWSTR *all = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> result;
    for (int i = 1; all && i < count; ++i)
        result.push_back(fs::path(all[i]).u8string());
    ::LocalFree(all);
    return result;
}

fs::path executablePath()
{
    std::wstring name(32768, L'\0');
    name.resize(::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return name;
}

std::string executableName(const std::string &application)
{
    return application + ".exe";
}

bool isRunning(const fs::path &program)
{
    HANDLE file = ::CreateFileW(program.c_str(), GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        ::CloseHandle(file);
        return false;
    }
    return ::GetLastError() == ERROR_SHARING_VIOLATION;
}

bool start(const fs::path &program, const std::vector<std::string> &arguments)
{
    std::wstring commandLine = quoted(program.wstring());
    for (const std::string &argument : arguments)
        commandLine += L' ' + quoted(wide(argument));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                          program.parent_path().c_str(), &startup, &process))
        return false;
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return true;
}

void sleep(int milliseconds)
{
    ::Sleep(static_cast<DWORD>(milliseconds));
}

bool hasDisplay()
{
    return true;
}

void showMessage(const std::string &text)
{
    ::MessageBoxW(nullptr, wide(text).c_str(), L"升级", MB_OK | MB_ICONWARNING | MB_SETFOREGROUND);
}

std::string reason(const std::error_code &error)
{
    switch (error.value()) {
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
        return "文件正在使用";
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
        return "没有写入权限，或文件正在使用";
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return "磁盘空间不足";
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return "文件已存在";
    default:
        return "错误 " + std::to_string(error.value());
    }
}

std::error_code replace(const fs::path &from, const fs::path &to)
{
    std::error_code error;
    for (int i = 0; i < kRetries; ++i) {
        if (::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return {};
        error = lastError();
        if (error.value() != ERROR_SHARING_VIOLATION && error.value() != ERROR_ACCESS_DENIED)
            break;
        sleep(kRetryEveryMs);
    }
    return error;
}

std::error_code NewFile::open(const fs::path &path, bool)
{
    m_handle = valueOf(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    return m_handle != -1 ? std::error_code() : lastError();
}

std::error_code NewFile::write(const char *data, std::size_t size)
{
    while (size > 0) {
        DWORD written = 0;
        const auto piece = static_cast<DWORD>(size < 0x100000 ? size : 0x100000);
        if (!::WriteFile(handleOf(m_handle), data, piece, &written, nullptr))
            return lastError();
        data += written;
        size -= written;
    }
    return {};
}

std::error_code NewFile::close()
{
    const std::error_code error = ::FlushFileBuffers(handleOf(m_handle)) ? std::error_code() : lastError();
    ::CloseHandle(handleOf(m_handle));
    m_handle = -1;
    return error;
}

NewFile::~NewFile()
{
    if (m_handle != -1)
        ::CloseHandle(handleOf(m_handle));
}

// A named mutex; the name is made of the folder's path, where case does not
// matter and a backslash is not allowed.
bool FolderLock::acquire(const fs::path &folder)
{
    std::wstring name = folder.wstring();
    ::CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
    for (wchar_t &c : name)
        c = c == L'\\' ? L'/' : c;
    HANDLE mutex = ::CreateMutexW(nullptr, TRUE, (L"Local\\KorvexUnpacker" + name.substr(0, 200)).c_str());
    const bool ours = mutex && ::GetLastError() != ERROR_ALREADY_EXISTS;
    if (mutex && !ours)
        ::CloseHandle(mutex);
    m_handle = ours ? valueOf(mutex) : -1;
    return ours;
}

FolderLock::~FolderLock()
{
    if (m_handle != -1)
        ::CloseHandle(handleOf(m_handle));
}

} // namespace Platform
