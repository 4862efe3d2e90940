#include "ptypeer.h"

#include <QElapsedTimer>
#include <QTest>

#include <cstdlib>
#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

PtyPeer::PtyPeer()
{
    termios raw{};
    cfmakeraw(&raw);
    raw.c_cflag |= CREAD | CLOCAL;
    char name[64] = "";
    if (openpty(&m_master, &m_slave, name, &raw, nullptr) != 0)
        qFatal("no pseudo-terminal");
    fcntl(m_master, F_SETFL, O_NONBLOCK);
    for (const int end : {m_master, m_slave})
        fcntl(end, F_SETFD, FD_CLOEXEC); // a program under test must not hold the line
    m_device = QString::fromLatin1(name);
}

PtyPeer::~PtyPeer()
{
    hangUp();
    if (m_slave >= 0)
        ::close(m_slave);
}

bool PtyPeer::write(const QByteArray &bytes)
{
    return writeFor(bytes, 20000) == bytes.size();
}

int PtyPeer::writeSome(const QByteArray &bytes)
{
    return writeFor(bytes, 500);
}

int PtyPeer::writeFor(const QByteArray &bytes, int timeoutMs)
{
    int done = 0;
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    while (done < bytes.size() && sinceProgress.elapsed() < timeoutMs) {
        const ssize_t count =
            ::write(m_master, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count > 0) {
            done += static_cast<int>(count);
            sinceProgress.start();
        }
        QCoreApplication::processEvents();
    }
    return done;
}

QByteArray PtyPeer::read(int count, int timeoutMs)
{
    (void)QTest::qWaitFor(
        [&] {
            char bytes[4096];
            // Not without end: a fast writer may keep up.
            for (ssize_t got = 1; got > 0 && (count == 0 || m_received.size() < count);) {
                got = ::read(m_master, bytes, sizeof bytes);
                if (got > 0)
                    m_received.append(bytes, static_cast<int>(got));
            }
            return m_received.size() >= count;
        },
        timeoutMs);
    return std::exchange(m_received, QByteArray());
}

// The number stays taken: another test beside this one must not get it and be
// opened in its place.
void PtyPeer::hangUp()
{
    if (m_master >= 0)
        ::close(m_master);
    m_master = -1;
}
