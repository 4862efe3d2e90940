#include "hostdevice.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace Boardsim {

HostDevice::~HostDevice()
{
    m_readable.reset();
    m_writable.reset();
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool HostDevice::open(const QString &path, QString *error)
{
    m_descriptor = ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios settings;
    if (m_descriptor < 0 || ::tcgetattr(m_descriptor, &settings) != 0) {
        *error = QStringLiteral("cannot open %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    ::cfmakeraw(&settings);
    ::tcsetattr(m_descriptor, TCSANOW, &settings);
    m_readable = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    m_writable = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Write);
    m_writable->setEnabled(false);
    connect(m_readable.get(), &QSocketNotifier::activated, this, &HostDevice::readSome);
    connect(m_writable.get(), &QSocketNotifier::activated, this, &HostDevice::writeSome);
    return true;
}

void HostDevice::write(const QByteArray &bytes)
{
    m_output += bytes;
    writeSome();
}

void HostDevice::setReading(bool reading)
{
    m_readable->setEnabled(reading);
}

void HostDevice::readSome()
{
    char buffer[4096];
    const ssize_t count = ::read(m_descriptor, buffer, sizeof buffer);
    if (count > 0) {
        emit received(QByteArray(buffer, int(count)));
    } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
        m_readable->setEnabled(false);
        emit hungUp();
    }
}

void HostDevice::writeSome()
{
    const ssize_t count = ::write(m_descriptor, m_output.constData(), size_t(m_output.size()));
    if (count > 0)
        m_output.remove(0, int(count));
    m_writable->setEnabled(!m_output.isEmpty());
}

} // namespace Boardsim
