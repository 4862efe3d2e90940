#include "virtualport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace Boardsim {

namespace {

// How often to look whether a program has opened or closed the port: the
// kernel reports the closing only.
constexpr int watchIntervalMs = 10;

QString systemError(const char *what)
{
    return QStringLiteral("%1: %2").arg(QLatin1String(what), QString::fromLocal8Bit(std::strerror(errno)));
}

// Opens the host's end for a moment: sets it to raw bytes, forgets what an
// earlier host left unread, and, by closing it, makes the kernel report "hung
// up" on our end until a host opens it.
bool resetHostEnd(const QByteArray &device)
{
    const int slave = ::open(device.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (slave < 0)
        return false;
    termios settings;
    bool ok = ::tcgetattr(slave, &settings) == 0;
    if (ok) {
        ::cfmakeraw(&settings);
        ok = ::tcsetattr(slave, TCSANOW, &settings) == 0;
    }
    // Reading gets at all of it; tcflush() leaves what waits in front of the
    // line discipline.
    char unread[4096];
    while (::read(slave, unread, sizeof unread) > 0) {
    }
    ::close(slave);
    return ok;
}

} // namespace

VirtualPort::VirtualPort(const QString &folder, const QString &name, QObject *parent)
    : SerialEnd(parent)
    , m_folder(folder)
    , m_link(QDir(folder).filePath(name))
{
    m_watch.setInterval(watchIntervalMs);
    connect(&m_watch, &QTimer::timeout, this, &VirtualPort::watch);
}

VirtualPort::~VirtualPort()
{
    unplug();
}

bool VirtualPort::plug(QString *error)
{
    if (isPlugged())
        return true;
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0) {
        *error = systemError("cannot open a pseudo-terminal");
        return false;
    }
    ::fcntl(master, F_SETFD, FD_CLOEXEC);
    ::fcntl(master, F_SETFL, O_RDWR | O_NONBLOCK);
    const char *device = nullptr;
    if (::grantpt(master) == 0 && ::unlockpt(master) == 0)
        device = ::ptsname(master);
    if (!device || !resetHostEnd(device)) {
        *error = systemError("cannot set up the pseudo-terminal");
        ::close(master);
        return false;
    }
    m_device = QFile::decodeName(device);
    if (!makeLink(error)) {
        ::close(master);
        return false;
    }

    m_master = master;
    m_readable = std::make_unique<QSocketNotifier>(master, QSocketNotifier::Read);
    m_writable = std::make_unique<QSocketNotifier>(master, QSocketNotifier::Write);
    connect(m_readable.get(), &QSocketNotifier::activated, this, &VirtualPort::readSome);
    connect(m_writable.get(), &QSocketNotifier::activated, this, &VirtualPort::writeSome);
    updateNotifiers();
    m_watch.start();
    return true;
}

void VirtualPort::unplug()
{
    if (!isPlugged())
        return;
    m_watch.stop();
    discardOutput();
    // The notifiers may be what called us.
    m_readable->setEnabled(false);
    m_writable->setEnabled(false);
    m_readable.release()->deleteLater();
    m_writable.release()->deleteLater();
    removeLink();
    ::close(m_master);
    m_master = -1;
    m_stalled = false;
    m_reading = true;
    if (m_hasHost) {
        m_hasHost = false;
        emit hostLeft();
    }
}

bool VirtualPort::makeLink(QString *error)
{
    if (!QDir().mkpath(m_folder)) {
        *error = QStringLiteral("cannot make the folder %1").arg(m_folder);
        return false;
    }
    const QFileInfo existing(m_link);
    if (existing.exists() && !existing.isSymLink()) {
        *error = QStringLiteral("%1 exists and is not a link").arg(m_link);
        return false;
    }
    // By renaming, so that a program that lists the folder sees a complete link or none.
    const QString fresh = QDir(m_folder).filePath(QStringLiteral(".boardsim-%1").arg(::getpid()));
    QFile::remove(fresh);
    if (!QFile::link(m_device, fresh) ||
        std::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(m_link).constData()) != 0) {
        *error = systemError("cannot make the link");
        QFile::remove(fresh);
        return false;
    }
    return true;
}

void VirtualPort::removeLink()
{
    // Another board may have taken the name in the meantime.
    if (QFile::symLinkTarget(m_link) == m_device)
        QFile::remove(m_link);
}

void VirtualPort::write(const QByteArray &bytes)
{
    if (!m_hasHost) {
        m_statistics.dropped += bytes.size();
        return;
    }
    m_output += bytes;
    if (queued() > 0 && !m_waiting.isValid())
        m_waiting.start();
    updateNotifiers();
}

void VirtualPort::setReading(bool reading)
{
    m_reading = reading;
    updateNotifiers();
}

void VirtualPort::setStalled(bool stalled)
{
    m_stalled = stalled;
    updateNotifiers();
}

VirtualPort::Statistics VirtualPort::statistics() const
{
    Statistics result = m_statistics;
    result.blockedMs = (m_waitedNs + (m_waiting.isValid() ? m_waiting.nsecsElapsed() : 0)) / 1000000;
    return result;
}

void VirtualPort::updateNotifiers()
{
    if (!isPlugged())
        return;
    const bool running = m_hasHost && !m_stalled;
    m_readable->setEnabled(running && m_reading);
    m_writable->setEnabled(running && queued() > 0);
}

void VirtualPort::watch()
{
    pollfd state{m_master, POLLIN, 0};
    if (::poll(&state, 1, 0) < 0)
        return;
    const bool hungUp = state.revents & POLLHUP;
    const bool cameAndWent = hungUp && (state.revents & POLLIN);
    if (!m_hasHost && (!hungUp || cameAndWent)) {
        m_hasHost = true;
        updateNotifiers();
        emit hostArrived();
    } else if (hungUp && m_hasHost) {
        dropHost();
    } else if (m_waiting.isValid() && !m_stalled) {
        // Should the kernel forget to announce that there is room again.
        writeSome();
    }
}

void VirtualPort::readSome()
{
    char buffer[65536];
    const ssize_t count = ::read(m_master, buffer, sizeof buffer);
    if (count > 0) {
        m_statistics.read += count;
        emit received(QByteArray(buffer, int(count)));
    } // a host that has gone is seen by watch()
}

void VirtualPort::writeSome()
{
    while (queued() > 0) {
        const ssize_t count = ::write(m_master, m_output.constData() + m_outputAt, size_t(queued()));
        if (count <= 0)
            return; // no room; or the host has gone, as watch() sees
        m_outputAt += int(count);
        m_statistics.written += count;
    }
    m_output.clear();
    m_outputAt = 0;
    endWaiting();
    updateNotifiers();
    emit outputEmpty();
}

void VirtualPort::dropHost()
{
    if (!m_hasHost)
        return;
    // What the host wrote before it closed the port is still there.
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(m_master, buffer, sizeof buffer);
        if (count <= 0)
            break;
        m_statistics.read += count;
        emit received(QByteArray(buffer, int(count)));
        if (!isPlugged()) // the board pulled its plug because of these bytes
            return;
    }
    m_hasHost = false;
    m_reading = true;
    discardOutput();
    updateNotifiers();
    resetHostEnd(QFile::encodeName(m_device));
    emit hostLeft();
}

void VirtualPort::discardOutput()
{
    m_statistics.dropped += queued();
    m_output.clear();
    m_outputAt = 0;
    endWaiting();
}

void VirtualPort::endWaiting()
{
    if (m_waiting.isValid())
        m_waitedNs += m_waiting.nsecsElapsed();
    m_waiting.invalidate();
}

} // namespace Boardsim
