#include "portdrain.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QSerialPort>
#include <QThread>

#include <chrono>
#include <limits>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <poll.h>
#include <sys/ioctl.h>
#endif

namespace {

constexpr int kCheckMs = 5;
constexpr qint64 kFrameNs = 16LL * 1000 * 1000; // as long as the window may stand still

// Bytes of an open port that the driver has accepted and not yet handed to the
// transmitter; 0 where it cannot tell.
qint64 driverBytes(const QSerialPort &port)
{
#ifdef Q_OS_WIN
    DWORD errors = 0;
    COMSTAT status = {};
    if (!port.isOpen() || !ClearCommError(port.handle(), &errors, &status))
        return 0;
    return status.cbOutQue;
#else
    int bytes = 0;
    return port.isOpen() && ioctl(port.handle(), TIOCOUTQ, &bytes) == 0 ? bytes : 0;
#endif
}

} // namespace

qint64 PortDrain::nowNs()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

qint64 PortDrain::byteNs(const QSerialPort &port)
{
    const int parity = port.parity() == QSerialPort::NoParity ? 0 : 1;
    const int stop = port.stopBits() == QSerialPort::OneStop ? 1 : 2;
    return LineDrain::byteNs(port.baudRate(), 1 + port.dataBits() + parity + stop);
}

qint64 PortDrain::pendingBytes(const QSerialPort &port)
{
    return port.bytesToWrite() + driverBytes(port);
}

void PortDrain::flush(QSerialPort &port)
{
    if (port.bytesToWrite() == 0)
        return;
#ifndef Q_OS_WIN
    // The library mistakes a full driver for a lost one.
    pollfd line = {port.handle(), POLLOUT, 0};
    if (poll(&line, 1, 0) != 1 || (line.revents & POLLOUT) == 0)
        return;
#endif
    port.flush();
}

PortDrain::PortDrain(QSerialPort *port, qint64 lineFreeAtNs, QObject *parent)
    : QObject(parent)
    , m_port(port)
    , m_drain(nowNs(), pendingBytes(*port), byteNs(*port), lineFreeAtNs)
{
    m_timer.setInterval(kCheckMs);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PortDrain::check);
    // The device is gone or accepts nothing any more.
    connect(
        m_port, &QSerialPort::errorOccurred, this,
        [this](QSerialPort::SerialPortError error) {
            if (error == QSerialPort::ResourceError || error == QSerialPort::ReadError ||
                error == QSerialPort::WriteError)
                finish(pendingBytes(*m_port));
        },
        Qt::QueuedConnection);
}

void PortDrain::start()
{
    flush(*m_port);
    if (isExpectedWithin(kFrameNs))
        waitFor(kFrameNs);
    if (!m_finished)
        m_timer.start();
}

void PortDrain::giveUp()
{
    finish(pendingBytes(*m_port));
}

void PortDrain::finishNow()
{
    waitFor(std::numeric_limits<qint64>::max());
}

bool PortDrain::isExpectedWithin(qint64 ns) const
{
    return m_drain.expectedNs(nowNs(), pendingBytes(*m_port)) <= ns;
}

void PortDrain::waitFor(qint64 ns)
{
    const qint64 startNs = nowNs();
    for (check(); !m_finished && nowNs() - startNs < ns; check()) {
        if (m_port->bytesToWrite() == 0)
            QThread::msleep(1);
        else if (!m_port->waitForBytesWritten(1) && m_port->error() != QSerialPort::TimeoutError)
            finish(pendingBytes(*m_port));
    }
}

void PortDrain::check()
{
    const qint64 pending = pendingBytes(*m_port);
    switch (m_drain.check(nowNs(), pending)) {
    case LineDrain::State::Pending:
        break;
    case LineDrain::State::Left:
        finish(0);
        break;
    case LineDrain::State::TimedOut:
        finish(pending);
        break;
    }
}

void PortDrain::cancel()
{
    if (m_finished)
        return;
    m_finished = true;
    m_timer.stop();
    m_port->disconnect(this);
}

void PortDrain::finish(qint64 unsentBytes)
{
    if (m_finished)
        return;
    cancel();
    if (unsentBytes > 0) {
        // What the system still holds would keep closing from returning.
        m_port->clear(QSerialPort::Output);
        qWarning().noquote() << m_port->portName() << "accepts no more," << unsentBytes
                             << "bytes were dropped";
    }
    emit finished(unsentBytes);
}
