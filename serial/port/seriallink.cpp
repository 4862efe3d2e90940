#include "seriallink.h"

#include "closingport.h"
#include "portdrain.h"
#include "portname.h"
#include "portopening.h"
#include "serialports.h"

#include <QDebug>
#include <QFileInfo>
#include <QPointer>

#include <utility>

namespace {

constexpr qint64 kReadBufferBytes = 1024 * 1024;

QString deniedText(const QString &name)
{
#ifndef Q_OS_WIN
    const QFileInfo file(PortName::deviceFile(name));
    if (file.exists() && (!file.isReadable() || !file.isWritable()))
        return QStringLiteral("没有访问该串口的权限，请把当前用户加入dialout组并重新登录");
#else
    Q_UNUSED(name)
#endif
    return QStringLiteral("串口正被其他程序占用，请关闭该程序后重试");
}

// Why a port cannot be opened or used, for the user.
QString errorReason(QSerialPort::SerialPortError error, const QString &name)
{
    switch (error) {
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("串口不存在，请检查设备是否已插好");
    case QSerialPort::PermissionError:
        return deniedText(name);
    case QSerialPort::ResourceError:
    case QSerialPort::ReadError:
    case QSerialPort::WriteError:
        return QStringLiteral("设备没有响应，可能已拔出或发生故障");
    case QSerialPort::UnsupportedOperationError:
        return QStringLiteral("设备不是可用的串口，或不支持所选的参数");
    default:
        return QStringLiteral("设备不是可用的串口");
    }
}

QString blockedText()
{
    return QStringLiteral("设备长时间未接收数据，本次数据未发送！");
}

QString stopBitsText(QSerialPort::StopBits stopBits)
{
    switch (stopBits) {
    case QSerialPort::OneAndHalfStop:
        return QStringLiteral("停止位 1.5");
    case QSerialPort::TwoStop:
        return QStringLiteral("停止位 2");
    default:
        return QStringLiteral("停止位 1");
    }
}

QString parityText(QSerialPort::Parity parity)
{
    switch (parity) {
    case QSerialPort::OddParity:
        return QStringLiteral("奇校验");
    case QSerialPort::EvenParity:
        return QStringLiteral("偶校验");
    case QSerialPort::MarkParity:
        return QStringLiteral("标志(1)");
    case QSerialPort::SpaceParity:
        return QStringLiteral("空格(0)");
    default:
        return QStringLiteral("无校验");
    }
}

bool setStopBits(QSerialPort &port, QSerialPort::StopBits stopBits)
{
#ifndef Q_OS_WIN
    if (port.isOpen() && stopBits == QSerialPort::OneAndHalfStop)
        return false; // no such thing there, and the library would not say so
#endif
    return port.setStopBits(stopBits);
}

// Windows refuses 1.5 stop bits with more than five data bits, even for the
// moment between setting the one and the other.
QStringList configure(QSerialPort &port, const SerialSettings &settings)
{
    QStringList refused;
    if (port.baudRate() != settings.baudRate && !port.setBaudRate(settings.baudRate))
        refused.append(QStringLiteral("波特率 %1").arg(settings.baudRate));
    if (port.stopBits() == QSerialPort::OneAndHalfStop && settings.stopBits != port.stopBits())
        port.setStopBits(QSerialPort::OneStop);
    if (port.dataBits() != settings.dataBits && !port.setDataBits(settings.dataBits))
        refused.append(QStringLiteral("数据位 %1").arg(settings.dataBits));
    if (port.stopBits() != settings.stopBits && !setStopBits(port, settings.stopBits))
        refused.append(stopBitsText(settings.stopBits));
    if (port.parity() != settings.parity && !port.setParity(settings.parity))
        refused.append(parityText(settings.parity));
    if (port.flowControl() != settings.flowControl && !port.setFlowControl(settings.flowControl))
        refused.append(QStringLiteral("流控"));
    return refused;
}

// Knows no link: it may run in another thread.
bool openDevice(QSerialPort &port, const SerialSettings &settings, SerialLink::Refusal refusal,
                QStringList *refused)
{
    port.setReadBufferSize(kReadBufferBytes);
    if (refusal == SerialLink::Refusal::FailsOpening)
        configure(port, settings);
    if (!port.open(QIODevice::ReadWrite))
        return false;
    if (refusal == SerialLink::Refusal::KeepsOpen)
        *refused = configure(port, settings);
    // A port without modem lines refuses these, which is no failure.
    port.setDataTerminalReady(settings.dtr);
    if (settings.rts && settings.flowControl != QSerialPort::HardwareControl)
        port.setRequestToSend(*settings.rts);
    return true;
}

} // namespace

SerialLink::SerialLink(QObject *parent)
    : Link(parent)
    , m_port(std::make_unique<QSerialPort>())
{
}

SerialLink::~SerialLink()
{
    blockSignals(true);
    beginClosing();
}

// ---- opening and closing

bool SerialLink::open(const SerialSettings &settings, Refusal refusal)
{
    beginClosing();
    m_settings = settings;
    m_port = std::make_unique<QSerialPort>();
    m_port->setPortName(PortName::device(settings.name));
    if (ClosingPort::isClosing(m_port->portName()))
        return fail(QStringLiteral("上次写入的数据仍在发送，请稍后再打开"));
    const QString tool = toolUsing(m_port->portName());
    if (!tool.isEmpty())
        return fail(QStringLiteral("串口已在“%1”中打开，请先在那里关闭").arg(tool));
    if (PortOpening::isOpening(m_port->portName()))
        return fail(QStringLiteral("上次打开该串口的操作尚未结束，请稍后再试"));
    m_refused.clear();
    if (m_opensLater && SerialPorts::mayBlock(settings.name)) {
        openLater(refusal);
        return true;
    }
    return finishOpening(openDevice(*m_port, settings, refusal, &m_refused));
}

void SerialLink::openLater(Refusal refusal)
{
    setResource(m_port->portName());
    m_closing = nullptr; // another device
    setState(State::Opening);
    m_opening = std::make_unique<PortOpening>();
    const auto refused = std::make_shared<QStringList>();
    connect(m_opening.get(), &PortOpening::finished, this, [this, refused](bool isOpen) {
        m_port = m_opening->takePort();
        m_opening.release()->deleteLater(); // this is its doing
        m_refused = *refused;
        if (finishOpening(isOpen)) { // the lines may have been moved meanwhile
            setDtr(m_settings.dtr);
            if (m_settings.rts)
                setRts(*m_settings.rts);
        }
    });
    m_opening->start(std::exchange(m_port, std::make_unique<QSerialPort>()),
                     [settings = m_settings, refusal, refused](QSerialPort &port) {
                         return openDevice(port, settings, refusal, refused.get());
                     });
}

bool SerialLink::finishOpening(bool isOpen)
{
    if (!isOpen) {
        qWarning().noquote() << "cannot open" << m_settings.name << m_port->errorString();
        const QString reason = errorReason(m_port->error(), m_settings.name);
        if (state() != State::Opening)
            return fail(reason);
        setState(State::Closed, reason);
        return false;
    }
    m_errorPending = false;
    m_hungUp = false;
    m_blocked = false;
    m_closing = nullptr;
    m_lineFreeAtNs = 0;
    connect(m_port.get(), &QSerialPort::readyRead, this, &SerialLink::handleArrival);
    connect(m_port.get(), &QSerialPort::bytesWritten, this, &SerialLink::handleHandedOver);
    connect(m_port.get(), &QSerialPort::errorOccurred, this, &SerialLink::handleError);
    m_readPause.setPort(m_port.get());
    setResource(m_port->portName());
    setState(State::Open);
    return true;
}

void SerialLink::cancelOpening()
{
    m_opening.reset();
    setState(State::Closed);
}

// A port that is still closing goes on with that.
bool SerialLink::fail(const QString &reason)
{
    setState(state(), reason);
    return false;
}

QStringList SerialLink::apply(const SerialSettings &settings)
{
    const QString name = m_settings.name;
    m_settings = settings;
    m_settings.name = name;
    return isOpen() ? configure(*m_port, m_settings) : QStringList();
}

void SerialLink::setDtr(bool isOn)
{
    m_settings.dtr = isOn;
    if (isOpen())
        m_port->setDataTerminalReady(isOn);
}

void SerialLink::setRts(bool isOn)
{
    m_settings.rts = isOn;
    if (isOpen() && m_settings.flowControl != QSerialPort::HardwareControl)
        m_port->setRequestToSend(isOn);
}

void SerialLink::driveLines(bool dtr, bool rts)
{
    if (!isOpen())
        return;
    if (dtr)
        m_port->setDataTerminalReady(true);
    m_port->setRequestToSend(rts);
    if (!dtr)
        m_port->setDataTerminalReady(false);
}

bool SerialLink::isRtsRaised() const
{
    return isOpen() && m_port->isRequestToSend();
}

void SerialLink::setBreak(bool isOn)
{
    if (isOpen())
        m_port->setBreakEnabled(isOn);
}

SerialLink::Lines SerialLink::lines() const
{
    Lines lines;
    if (!isOpen())
        return lines;
    m_port->clearError();
    const QSerialPort::PinoutSignals pinout = m_port->pinoutSignals();
    lines.isKnown = m_port->error() == QSerialPort::NoError;
    lines.cts = pinout & QSerialPort::ClearToSendSignal;
    lines.dsr = pinout & QSerialPort::DataSetReadySignal;
    lines.dcd = pinout & QSerialPort::DataCarrierDetectSignal;
    lines.ri = pinout & QSerialPort::RingIndicatorSignal;
    return lines;
}

void SerialLink::close()
{
    if (m_opening)
        cancelOpening();
    else if (m_closing)
        m_closing->dropRest();
    else
        beginClosing();
}

void SerialLink::beginClosing()
{
    if (m_opening)
        cancelOpening();
    if (!isOpen())
        return;
    readRest();
    if (!isOpen())
        return;
    if (m_hungUp) {
        endNow(QString());
        return;
    }
    letGo();
    connect(m_port.get(), &QSerialPort::bytesWritten, this,
            [this](qint64 bytes) { emit handedOver(bytes, {}); });
    auto *closing = new ClosingPort(std::exchange(m_port, std::make_unique<QSerialPort>()), m_lineFreeAtNs);
    m_closing = closing;
    connect(closing, &ClosingPort::closed, this, [this, closing, name = m_settings.name](qint64 unsentBytes) {
        handleClosed(closing, name, unsentBytes);
    });
    setState(State::Closing);
    closing->start();
}

// Another port may have been opened meanwhile.
void SerialLink::handleClosed(const ClosingPort *closing, const QString &name, qint64 unsentBytes)
{
    if (unsentBytes > 0)
        emit dropped(unsentBytes, Peer());
    if (m_closing == closing) {
        m_closing = nullptr;
        setState(State::Closed);
    }
    if (unsentBytes > 0)
        reportUnsent(name, unsentBytes);
}

void SerialLink::reportUnsent(const QString &name, qint64 bytes)
{
    emit failed(QStringLiteral("串口[%1]有 %2 字节未发出！").arg(name).arg(bytes));
}

// ---- sending

qint64 SerialLink::accept(const QByteArray &bytes, quint64 peer)
{
    if (!isOpen() || m_hungUp || peer != allPeers)
        return 0;
    const qint64 pending = m_port->bytesToWrite();
    const bool isTooMuch = pending + bytes.size() > maxPendingBytes;
    setRefusal(isTooMuch ? blockedText() : QString());
    setBlocked(isTooMuch);
    if (isTooMuch)
        return 0;
    const qint64 count = m_port->write(bytes);
    if (count <= 0)
        return 0;
    m_readPause.end();
    m_lineFreeAtNs = qMax(m_lineFreeAtNs, PortDrain::nowNs()) + count * PortDrain::byteNs(*m_port);
    // Now rather than in the event loop's next turn: the window may draw first. Not
    // from within the port's own writing, which would go on with a full driver.
    if (pending == 0 && !m_isHandingOver)
        PortDrain::flush(*m_port);
    return count;
}

qint64 SerialLink::pendingBytes() const
{
    return m_closing ? m_closing->pendingBytes() : m_port->bytesToWrite();
}

void SerialLink::handleHandedOver(qint64 bytes)
{
    if (m_port->bytesToWrite() <= maxPendingBytes / 2)
        setBlocked(false);
    m_isHandingOver = true;
    emit handedOver(bytes, {});
    m_isHandingOver = false;
}

void SerialLink::setBlocked(bool isBlocked)
{
    if (std::exchange(m_blocked, isBlocked) == isBlocked)
        return;
    emit blocked(Peer(), isBlocked);
    if (isBlocked)
        emit failed(blockedText());
}

void SerialLink::drain()
{
    m_drain = std::make_unique<PortDrain>(m_port.get(), m_lineFreeAtNs);
    connect(m_drain.get(), &PortDrain::finished, this, [this](qint64 unsentBytes) {
        if (unsentBytes > 0)
            reportUnsent(m_settings.name, unsentBytes);
        emit drained(unsentBytes);
    });
    m_drain->start();
}

void SerialLink::cancelDrain()
{
    if (m_drain)
        m_drain->cancel(); // this may be its doing: it goes with the next
}

// ---- receiving

void SerialLink::handleArrival()
{
    if (!isReading())
        return;
    const qint64 before = m_readBytes;
    readNow();
    if (isOpen())
        m_readPause.handleRead(m_readBytes - before, m_arrivalUs);
}

void SerialLink::readNow()
{
    if (!m_port->isOpen())
        return;
    const QByteArray bytes = m_port->read(m_port->bytesAvailable()); // readAll() would allocate twice
    m_readBytes += bytes.size();
    m_arrivalUs = nowUs();
    if (!bytes.isEmpty())
        emit received(bytes, m_arrivalUs, m_peer);
}

// What the system still has, as well; a flood has no end. Waiting may read, too.
void SerialLink::readRest()
{
    const QSerialPort *port = m_port.get();
    const qint64 limit = m_readBytes + kReadBufferBytes;
    while (m_readBytes < limit && isOpen() && m_port.get() == port) {
        readNow();
        if (!isOpen() || m_port.get() != port || !m_port->waitForReadyRead(0))
            break;
    }
}

void SerialLink::readingChanged()
{
    if (isReading())
        readNow();
}

// ---- errors

// Reported from within the port's own reading and writing, and again at each
// try: handled once, in the event loop's next turn.
void SerialLink::handleError(QSerialPort::SerialPortError error)
{
    const bool isWriteError = error == QSerialPort::WriteError;
    if (!isWriteError && error != QSerialPort::ResourceError && error != QSerialPort::ReadError)
        return;
    m_hungUp = m_hungUp || !isWriteError;
    if (std::exchange(m_errorPending, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this, port = QPointer<QSerialPort>(m_port.get())] {
            if (port != m_port.get() || !isOpen())
                return; // closed meanwhile
            m_errorPending = false;
            if (m_hungUp || !SerialPorts::isPresent(m_settings.name))
                handleHangUp();
            else
                handleWriteError();
        },
        Qt::QueuedConnection);
}

void SerialLink::handleWriteError()
{
    // What stays queued would be tried again without end.
    const qint64 unsentBytes = PortDrain::pendingBytes(*m_port);
    qWarning().noquote() << "cannot write to" << m_settings.name << m_port->errorString();
    if (m_endsOnWriteError) {
        handleHangUp();
        return;
    }
    m_port->clear(QSerialPort::Output);
    emit dropped(unsentBytes, Peer());
    emit failed(QStringLiteral("数据发送失败，%1 字节未发出：%2")
                    .arg(unsentBytes)
                    .arg(errorReason(QSerialPort::WriteError, m_settings.name)));
}

void SerialLink::handleHangUp()
{
    readNow();
    if (isOpen())
        endNow(errorReason(QSerialPort::ResourceError, m_settings.name));
}

// Nothing leaves any more.
void SerialLink::endNow(const QString &reason)
{
    letGo();
    const qint64 unsentBytes = PortDrain::pendingBytes(*m_port);
    m_port->clear(QSerialPort::Output);
    m_port->close();
    if (unsentBytes > 0)
        emit dropped(unsentBytes, Peer());
    setState(State::Closed, reason);
}

// The port is not this link's any more.
void SerialLink::letGo()
{
    cancelDrain();
    m_readPause.end();
    m_port->disconnect(this);
}
