#include "serialreconnector.h"

#include "portname.h"

#include <QFileInfo>
#include <QFileSystemWatcher>

#include <utility>

namespace {

// Where the system reports nothing, and while a device that is there can't be
// opened yet: it may belong to root for its first moment, or to another program.
constexpr int kPeriodMs = 100;
constexpr int kBusyPeriodMs = 500;
constexpr int kBusyAfterMs = 3000;

} // namespace

SerialReconnector::SerialReconnector(SerialLink *link, QObject *parent)
    : QObject(parent)
    , m_link(link)
    , m_timer(this)
{
    connect(m_link, &Link::stateChanged, this, &SerialReconnector::handleState);
    connect(&m_timer, &QTimer::timeout, this, &SerialReconnector::attempt);
}

SerialReconnector::~SerialReconnector() = default;

void SerialReconnector::setEnabled(bool isEnabled)
{
    m_isEnabled = isEnabled;
    m_link->setEndsOnWriteError(isEnabled);
    if (!isEnabled)
        cancel();
}

void SerialReconnector::handleState(Link::State state)
{
    if (state == Link::State::Open) {
        m_wasOpen = true;
        m_identity = SerialPorts::identityOf(m_link->settings().name);
        end();
    } else if (state == Link::State::Closed) {
        const bool hasEnded = std::exchange(m_wasOpen, false) && !m_link->reason().isEmpty();
        if (isWaiting())
            handleFailedAttempt();
        else if (hasEnded && m_isEnabled)
            wait();
    }
}

void SerialReconnector::wait()
{
    m_portName = m_link->settings().name;
    m_since = QDateTime::currentDateTime();
    m_reason.clear();
    m_failedAttempts = 0;
    watchFolders();
    m_timer.start(kPeriodMs);
    emit waitingChanged(true);
}

// Devices, and virtual ports, come as entries of a folder.
void SerialReconnector::watchFolders()
{
    m_watcher = std::make_unique<QFileSystemWatcher>();
#ifndef Q_OS_WIN
    m_watcher->addPath(QStringLiteral("/dev"));
#endif
    if (!PortName::virtualFolder().isEmpty())
        m_watcher->addPath(PortName::virtualFolder());
    connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, this, &SerialReconnector::attempt);
}

void SerialReconnector::end()
{
    if (!isWaiting())
        return;
    m_timer.stop();
    m_failedAttempts = 0;
    m_watcher.release()->deleteLater(); // this may be its doing
    emit waitingChanged(false);
}

void SerialReconnector::cancel()
{
    end();
    if (m_link->state() == Link::State::Opening)
        m_link->close();
}

void SerialReconnector::attempt()
{
    if (m_isHeld || !isWaiting() || m_link->state() == Link::State::Opening)
        return;
    if (SerialPorts::find(m_portName, m_identity, SerialPorts::ports()).isEmpty())
        return;
    // The list may be older than the device.
    SerialPorts::refresh();
    const QString name = SerialPorts::find(m_portName, m_identity, SerialPorts::ports());
    if (name.isEmpty())
        return;
    SerialSettings settings = m_link->settings(); // the lines may have been moved meanwhile
    settings.name = name;
    if (!m_link->open(settings, SerialLink::Refusal::KeepsOpen))
        handleFailedAttempt();
}

void SerialReconnector::handleFailedAttempt()
{
    ++m_failedAttempts;
    if (m_since.msecsTo(QDateTime::currentDateTime()) > kBusyAfterMs)
        m_timer.setInterval(kBusyPeriodMs);
    if (std::exchange(m_reason, m_link->reason()) != m_reason)
        emit reasonChanged();
}
