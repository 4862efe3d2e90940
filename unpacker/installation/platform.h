#pragma once

// What the systems do differently: one implementation in platform_windows.cpp
// and one in platform_posix.cpp. Texts are UTF-8.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace Platform {

// Once, before anything else.
void prepare();
// Without the program's own name.
std::vector<std::string> arguments(int argc, char **argv);
// The program that is running, with its folder; links are resolved.
std::filesystem::path executablePath();
// The file name of the program with that name.
std::string executableName(const std::string &application);

// Whether any process runs this file. Knows it from the system, which does not
// let such a file be opened for writing.
bool isRunning(const std::filesystem::path &program);
// Starts it in its own folder, independent of this process.
bool start(const std::filesystem::path &program, const std::vector<std::string> &arguments);
void sleep(int milliseconds);

// Whether a window can be shown.
bool hasDisplay();
// Shows it in a window and waits until it has been read. Where there is no
// display, or no program that shows messages, it is only printed.
void showMessage(const std::string &text);

// Why something failed, in Chinese; the system's own texts may be in any
// encoding.
std::string reason(const std::error_code &error);

// Moves a file, replacing another one in one step. Where the system refuses
// because a process has a file open, it is tried again for some seconds.
std::error_code replace(const std::filesystem::path &from, const std::filesystem::path &to);

// A new file that is on the disk when close() has returned without an error.
class NewFile
{
public:
    // Fails where something of that name exists.
    std::error_code open(const std::filesystem::path &path, bool executable);
    std::error_code write(const char *data, std::size_t size);
    std::error_code close();

    NewFile() = default;
    ~NewFile();
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

private:
    std::intptr_t m_handle = -1;
};

// Held by at most one process for a folder; ends with the process. Creates no file
// in the folder.
class FolderLock
{
public:
    bool acquire(const std::filesystem::path &folder);

    FolderLock() = default;
    ~FolderLock();
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

private:
    std::intptr_t m_handle = -1;
};

} // namespace Platform
