#include "progresswindow.h"

#include "platform.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

ProgressWindow::ProgressWindow(const std::string &text)
    : m_handle(-1)
{
    int ends[2] = {-1, -1};
    if (!Platform::hasDisplay() || ::pipe2(ends, O_CLOEXEC) != 0)
        return;
    const std::string label = "--text=" + text;
    const char *const arguments[] = {"zenity",      "--progress",   "--pulsate",   "--auto-close",
                                     "--no-cancel", "--title=升级", label.c_str(), nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    pid_t process = 0;
    if (::posix_spawnp(&process, arguments[0], &actions, nullptr, const_cast<char *const *>(arguments),
                       environ) == 0) {
        m_process = process;
        m_handle = ends[1];
    } else {
        ::close(ends[1]);
    }
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[0]);
}

void ProgressWindow::setText(const std::string &text)
{
    const std::string line = "# " + text + '\n';
    if (m_handle >= 0 && ::write(static_cast<int>(m_handle), line.data(), line.size()) < 0) {
        ::close(static_cast<int>(m_handle)); // the user has closed it
        m_handle = -1;
    }
}

ProgressWindow::~ProgressWindow()
{
    if (m_handle >= 0)
        ::close(static_cast<int>(m_handle));
    if (m_process > 0) {
        ::kill(static_cast<pid_t>(m_process), SIGTERM);
        ::waitpid(static_cast<pid_t>(m_process), nullptr, 0);
    }
}
