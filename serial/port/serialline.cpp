#include "serialline.h"

#include "closingport.h"
#include "outputqueue.h"
#include "portdrain.h"
#include "portfault.h"
#include "portname.h"

#include <QDebug>
#include <QFileInfo>
#include <QSerialPortInfo>

#include <limits>
#include <utility>

SerialLine::SerialLine(QObject *parent)
    : QObject(parent)
    , m_port(std::make_unique<QSerialPort>())
{
}

SerialLine::~SerialLine()
{
    blockSignals(true);
    close();
}

// ---- opening and closing

QSerialPort &SerialLine::prepare(const QString &name)
{
    close();
    m_name = name;
    m_port = std::make_unique<QSerialPort>();
    m_port->setPortName(PortName::device(name));
    connect(m_port.get(), &QSerialPort::readyRead, this, [this] {
        if (m_use == Use::Owner)
            emit readyRead();
    });
    connect(m_port.get(), &QSerialPort::errorOccurred, this, &SerialLine::handleError);
    return *m_port;
}

bool SerialLine::open(QIODevice::OpenMode mode)
{
    m_hungUp = false;
    m_lineFreeAtNs = 0;
    m_reason.clear();
    if (ClosingPort::isClosing(m_port->portName())) {
        m_reason = QStringLiteral("上次写入的数据仍在发送，请稍后再打开");
        return false;
    }
    if (!m_port->open(mode)) {
        qWarning().noquote() << "cannot open" << m_name << m_port->errorString();
        m_reason = PortFault::text(m_port->error(), PortName::device(m_name));
        return false;
    }
    // Boards that are USB devices themselves keep silent until they see it. Where
    // Windows leaves it down, other systems raise it at opening; a port without
    // modem lines refuses, which is no failure.
    m_port->setDataTerminalReady(true);
    return true;
}

void SerialLine::close()
{
    if (!m_port->isOpen())
        return;
    if (m_drain)
        m_drain->cancel(); // this may be its doing: it goes with the next
    if (std::exchange(m_use, Use::Owner) == Use::Lent)
        m_lineFreeAtNs = std::numeric_limits<qint64>::max(); // what the borrower wrote is not known
    if (m_hungUp) {
        m_port->clear(QSerialPort::Output);
        m_port->close();
        emit closed(0); // the hang-up says already that nothing leaves any more
        return;
    }
    ++m_closing;
    m_port->disconnect(this);
    auto *closing = new ClosingPort(std::exchange(m_port, std::make_unique<QSerialPort>()), m_lineFreeAtNs);
    connect(closing, &ClosingPort::closed, this, [this, name = m_name](qint64 unsent) {
        --m_closing;
        m_drainedName = name;
        emit closed(unsent);
    });
    closing->start();
}

bool SerialLine::isOpen() const
{
    return m_port->isOpen() && m_use == Use::Owner;
}

QString SerialLine::writeFailedText(qint64 unsentBytes) const
{
    return QStringLiteral("数据发送失败，%1 字节未发出：%2").arg(unsentBytes).arg(m_reason);
}

QString SerialLine::unsentText(qint64 unsentBytes) const
{
    return QStringLiteral("串口[%1]有 %2 字节未发出！").arg(m_drainedName).arg(unsentBytes);
}

// ---- writing

qint64 SerialLine::write(const QByteArray &bytes)
{
    const qint64 count = m_port->write(bytes);
    if (count > 0)
        m_lineFreeAtNs = qMax(m_lineFreeAtNs, PortDrain::nowNs()) + count * PortDrain::byteNs(*m_port);
    else if (count < 0)
        m_reason = PortFault::text(m_port->error(), PortName::device(m_name));
    return count;
}

void SerialLine::flush()
{
    flushOutput(*m_port);
}

// ---- lending

void SerialLine::lend()
{
    m_use = Use::Lending;
    m_drain = std::make_unique<PortDrain>(m_port.get(), m_lineFreeAtNs);
    connect(m_drain.get(), &PortDrain::finished, this, [this](qint64 unsent) {
        m_use = Use::Lent;
        m_drainedName = m_name;
        emit lent(m_hungUp ? nullptr : m_port.get(), unsent);
    });
    m_drain->start();
}

bool SerialLine::takeBack()
{
    if (m_drain)
        m_drain->cancel(); // this may be its doing: it goes with the next
    if (std::exchange(m_use, Use::Owner) == Use::Lent)
        m_lineFreeAtNs = 0; // the borrower has waited for its own bytes
    return m_port->isOpen() && !m_hungUp;
}

// ---- errors

void SerialLine::handleError(QSerialPort::SerialPortError error)
{
    if (!m_port->isOpen() || m_hungUp)
        return;
    if (error == QSerialPort::WriteError) {
        // Reported from within the port's own writing, and again at each try.
        if (!std::exchange(m_writeFailed, true))
            QMetaObject::invokeMethod(this, &SerialLine::handleWriteError, Qt::QueuedConnection);
        return;
    }
    // A hung-up line stays readable with nothing to read, so that the error
    // comes again and again; one report is enough.
    if (error != QSerialPort::ResourceError && error != QSerialPort::ReadError)
        return;
    m_hungUp = true;
    m_reason = PortFault::text(error, PortName::device(m_name));
    if (m_use == Use::Owner)
        emit hungUp();
}

void SerialLine::handleWriteError()
{
    m_writeFailed = false;
    if (!m_port->isOpen() || m_hungUp)
        return;
    if (!isDevicePresent()) {
        handleError(QSerialPort::ResourceError);
        return;
    }
    // What stays queued would be tried again without end.
    const qint64 unsent = PortDrain::pendingBytes(*m_port);
    qWarning().noquote() << "cannot write to" << m_name << m_port->errorString();
    m_reason = PortFault::text(QSerialPort::WriteError, PortName::device(m_name));
    m_port->clear(QSerialPort::Output);
    emit writeFailed(unsent);
}

bool SerialLine::isDevicePresent() const
{
#ifdef Q_OS_WIN
    return !QSerialPortInfo(m_port->portName()).isNull();
#else
    const QString device = PortName::device(m_name);
    return QFileInfo::exists(device.startsWith(QLatin1Char('/')) ? device : QStringLiteral("/dev/") + device);
#endif
}
