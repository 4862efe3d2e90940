#include "platform.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

extern char **environ;

namespace {

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

// Closed without syncing: close() was not called.
void closeQuietly(std::intptr_t &handle)
{
    if (handle >= 0)
        ::close(static_cast<int>(handle));
    handle = -1;
}

} // namespace

namespace Platform {

void prepare()
{
    ::signal(SIGXFSZ, SIG_IGN); // a limit is reported as an error of the write instead
    ::signal(SIGHUP, SIG_IGN);  // the terminal may close with the application
    ::signal(SIGPIPE, SIG_IGN); // and the progress window with its user
}

std::vector<std::string> arguments(int argc, char **argv)
{
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

fs::path executablePath()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

std::string executableName(const std::string &application)
{
    return application;
}

bool isRunning(const fs::path &program)
{
    const int file = ::open(program.c_str(), O_WRONLY | O_CLOEXEC);
    if (file >= 0)
        ::close(file);
    return file < 0 && errno == ETXTBSY;
}

bool start(const fs::path &program, const std::vector<std::string> &arguments)
{
    // A successful exec closes the pipe; a failed one writes to it. Everything the
    // child needs is allocated before the fork.
    std::vector<char *> argv{const_cast<char *>(program.c_str())};
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    const fs::path folder = program.parent_path();
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return false;
    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        ::signal(SIGXFSZ, SIG_DFL);
        ::signal(SIGHUP, SIG_DFL);
        ::signal(SIGPIPE, SIG_DFL);
        if (::fork() != 0)
            ::_exit(0);
        if (::chdir(folder.c_str()) == 0)
            ::execv(program.c_str(), argv.data());
        const char failed = 1;
        const ssize_t ignored = ::write(ends[1], &failed, 1);
        ::_exit(ignored == 1 ? 127 : 126);
    }
    ::close(ends[1]);
    if (child > 0)
        ::waitpid(child, nullptr, 0);
    char failed = 0;
    const bool started = child > 0 && ::read(ends[0], &failed, 1) == 0;
    ::close(ends[0]);
    return started;
}

void sleep(int milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

bool hasDisplay()
{
    const auto isSet = [](const char *name) {
        const char *value = std::getenv(name);
        return value && *value != '\0';
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

// The first of the usual programs for it that is installed.
void showMessage(const std::string &text)
{
    std::fprintf(stderr, "%s\n", text.c_str());
    if (!hasDisplay())
        return;
    const std::vector<std::vector<std::string>> commands{
        {"zenity", "--error", "--no-markup", "--width=400", "--title=升级", "--text=" + text},
        {"kdialog", "--title", "升级", "--error", text},
        {"xmessage", "-center", text}};
    for (const std::vector<std::string> &command : commands) {
        std::vector<char *> arguments;
        for (const std::string &argument : command)
            arguments.push_back(const_cast<char *>(argument.c_str()));
        arguments.push_back(nullptr);
        pid_t process = 0;
        if (::posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0) {
            ::waitpid(process, nullptr, 0);
            return;
        }
    }
}

std::string reason(const std::error_code &error)
{
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
        error == std::errc::read_only_file_system)
        return "没有写入权限";
    if (error == std::errc::no_space_on_device || error == std::errc::file_too_large)
        return "磁盘空间不足";
    if (error == std::errc::file_exists)
        return "文件已存在";
    return "错误 " + std::to_string(error.value());
}

std::error_code replace(const fs::path &from, const fs::path &to)
{
    return ::rename(from.c_str(), to.c_str()) == 0 ? std::error_code() : lastError();
}

std::error_code NewFile::open(const fs::path &path, bool executable)
{
    m_handle = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, executable ? 0777 : 0666);
    return m_handle >= 0 ? std::error_code() : lastError();
}

std::error_code NewFile::write(const char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(static_cast<int>(m_handle), data, size);
        if (written < 0 && errno != EINTR)
            return lastError();
        if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        }
    }
    return {};
}

std::error_code NewFile::close()
{
    std::error_code error = ::fsync(static_cast<int>(m_handle)) == 0 ? std::error_code() : lastError();
    if (::close(static_cast<int>(m_handle)) != 0 && !error)
        error = lastError();
    m_handle = -1;
    return error;
}

NewFile::~NewFile()
{
    closeQuietly(m_handle);
}

bool FolderLock::acquire(const fs::path &folder)
{
    closeQuietly(m_handle);
    m_handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    // A file system without locks is accepted.
    return m_handle >= 0 &&
           (::flock(static_cast<int>(m_handle), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK);
}

FolderLock::~FolderLock()
{
    closeQuietly(m_handle);
}

} // namespace Platform
