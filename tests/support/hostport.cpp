#include "hostport.h"

#include <QElapsedTimer>
#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

HostPort::HostPort(const QString &path)
    : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
{
    if (m_descriptor < 0)
        return;
    termios settings;
    ::tcgetattr(m_descriptor, &settings);
    ::cfmakeraw(&settings);
    ::tcsetattr(m_descriptor, TCSANOW, &settings);
}

HostPort::~HostPort()
{
    close();
}

void HostPort::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

QByteArray HostPort::readSome(qint64 most, int quietMs)
{
    pollfd state{m_descriptor, POLLIN, 0};
    if (::poll(&state, 1, quietMs) <= 0)
        return {};
    char buffer[65536];
    const ssize_t count = ::read(m_descriptor, buffer, size_t(qMin(most, qint64(sizeof buffer))));
    return count > 0 ? QByteArray(buffer, int(count)) : QByteArray();
}

QByteArray HostPort::read(qint64 count, int quietMs)
{
    QByteArray bytes;
    while (bytes.size() < count) {
        const QByteArray more = readSome(count - bytes.size(), quietMs);
        if (more.isEmpty())
            break;
        bytes += more;
    }
    return bytes;
}

QByteArray HostPort::readUntil(const QByteArray &end, int quietMs)
{
    QByteArray bytes;
    while (!bytes.endsWith(end)) {
        const QByteArray more = readSome(1, quietMs);
        if (more.isEmpty())
            break;
        bytes += more;
    }
    return bytes;
}

bool HostPort::write(const QByteArray &bytes, int timeoutMs)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        pollfd state{m_descriptor, POLLOUT, 0};
        if (::poll(&state, 1, timeoutMs) <= 0)
            return false;
        const ssize_t count = ::write(m_descriptor, bytes.constData() + done, size_t(bytes.size() - done));
        if (count > 0)
            done += count;
    }
    return true;
}

bool HostPort::waitForHangUp(int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!clock.hasExpired(timeoutMs)) {
        pollfd state{m_descriptor, POLLIN, 0};
        if (::poll(&state, 1, timeoutMs) > 0 && (state.revents & (POLLHUP | POLLERR)))
            return true;
        readSome(65536, 0);
    }
    return false;
}
