#include "closingport.h"

#include "portdrain.h"

#include <QCoreApplication>
#include <QSerialPort>
#include <QVector>

#include <algorithm>

namespace {

// Bytes that still arrive have no reader; the rest of a flood stays with the system.
constexpr qint64 kReadBufferBytes = 4096;

QVector<ClosingPort *> &closingPorts()
{
    static QVector<ClosingPort *> ports;
    return ports;
}

} // namespace

ClosingPort::ClosingPort(std::unique_ptr<QSerialPort> port, qint64 lineFreeAtNs)
    : m_port(std::move(port))
    , m_drain(std::make_unique<PortDrain>(m_port.get(), lineFreeAtNs))
{
    static const bool atExit = (qAddPostRoutine(&ClosingPort::finishAll), true);
    Q_UNUSED(atExit)
    m_port->setReadBufferSize(kReadBufferBytes);
    connect(m_drain.get(), &PortDrain::finished, this, &ClosingPort::close);
    closingPorts().append(this);
}

ClosingPort::~ClosingPort()
{
    closingPorts().removeOne(this);
}

void ClosingPort::start()
{
    m_drain->start();
}

qint64 ClosingPort::pendingBytes() const
{
    return m_port->bytesToWrite();
}

void ClosingPort::dropRest()
{
    m_drain->giveUp();
}

void ClosingPort::close(qint64 unsentBytes)
{
    m_port->close();
    deleteLater();
    emit closed(unsentBytes);
}

bool ClosingPort::isClosing(const QString &portName)
{
    return std::any_of(closingPorts().cbegin(), closingPorts().cend(), [&](const ClosingPort *closing) {
        return closing->m_port->isOpen() && closing->m_port->portName() == portName;
    });
}

void ClosingPort::finishAll()
{
    const QVector<ClosingPort *> ports = closingPorts();
    for (ClosingPort *closing : ports) {
        closing->m_drain->finishNow();
        delete closing; // without an event loop deleteLater() does nothing
    }
}
