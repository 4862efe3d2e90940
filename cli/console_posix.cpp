#include "console.h"

#include "stopsignal.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A pipe that is ready accepts so much without waiting.
constexpr size_t kPieceBytes = PIPE_BUF;
constexpr int kStopCheckMs = 100; // in case the signal went to another thread

bool isRegularOutput()
{
    static const bool isRegular = [] {
        struct stat file = {};
        return ::fstat(STDOUT_FILENO, &file) == 0 && S_ISREG(file.st_mode);
    }();
    return isRegular;
}

std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max();

// False when the process is to end before there is room.
bool waitForRoom()
{
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    while (::poll(&output, 1, kStopCheckMs) <= 0) {
        if (StopSignal::isRequested() || std::chrono::steady_clock::now() > deadline)
            return false;
    }
    return true;
}

} // namespace

namespace Console {

void prepare()
{
    // A port must not get the number of a stream that is closed.
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) < 0)
            (void)::open("/dev/null", O_RDWR);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // In the background the terminal's input is refused rather than waited for.
    std::signal(SIGTTIN, SIG_IGN);
}

Outcome write(const QByteArray &bytes, QString *reason)
{
    const char *next = bytes.constData();
    size_t left = static_cast<size_t>(bytes.size());
    while (left > 0) {
        if (!isRegularOutput() && !waitForRoom())
            return Outcome::Ended;
        const ssize_t count =
            ::write(STDOUT_FILENO, next, isRegularOutput() ? left : std::min(left, kPieceBytes));
        if (count >= 0) {
            next += count;
            left -= static_cast<size_t>(count);
        } else if (errno == EPIPE || errno == EIO) {
            return Outcome::Closed;
        } else if (errno == EINTR && StopSignal::isRequested()) {
            return Outcome::Ended;
        } else if (errno != EINTR && errno != EAGAIN) {
            *reason = errno == ENOSPC || errno == EFBIG || errno == EDQUOT
                          ? QStringLiteral("磁盘空间不足")
                          : QString::fromLocal8Bit(std::strerror(errno));
            return Outcome::Failed;
        }
    }
    return Outcome::Written;
}

void setDeadline(int msFromNow)
{
    deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(msFromNow);
}

int read(char *bytes, int size)
{
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, bytes, static_cast<size_t>(size));
        if (count >= 0)
            return static_cast<int>(count);
        if (errno == EAGAIN) {
            pollfd input = {STDIN_FILENO, POLLIN, 0};
            ::poll(&input, 1, -1);
        } else if (errno != EINTR) {
            return 0;
        }
    }
}

void tellPart(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const ssize_t ignored = ::write(STDERR_FILENO, bytes.constData(), static_cast<size_t>(bytes.size()));
    (void)ignored;
}

void tell(const QString &message)
{
    tellPart(message + QLatin1Char('\n'));
}

bool isErrorTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

} // namespace Console
