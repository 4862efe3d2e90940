#pragma once

// Opens a serial link again when its device is back: after it vanished, hung up
// or failed to write, not after its owner closed it. The device is the one that
// the link had open, by the port's name and, where the system tells them, vendor,
// product and serial number; with a number of its own also under another name.
//
// While it waits the link is closed and accepts nothing.

#include "seriallink.h"
#include "serialports.h"

#include <QDateTime>
#include <QTimer>

#include <memory>

class QFileSystemWatcher;

class SerialReconnector : public QObject
{
    Q_OBJECT

public:
    explicit SerialReconnector(SerialLink *link, QObject *parent = nullptr);
    ~SerialReconnector() override;

    // Off at first. Waiting ends where it is switched off.
    void setEnabled(bool isEnabled);
    bool isEnabled() const { return m_isEnabled; }

    bool isWaiting() const { return m_timer.isActive(); }
    QDateTime waitingSince() const { return m_since; }
    int failedAttempts() const { return m_failedAttempts; } // since then
    // Under which the device was last there.
    const QString &portName() const { return m_portName; }
    // Why the last attempt to open the device failed, for the user; empty while it
    // is not there.
    QString reason() const { return m_reason; }
    void cancel();

    // While somebody else works with the link, as a file transfer does, it is not
    // opened here.
    void setHeld(bool isHeld) { m_isHeld = isHeld; }

signals:
    void waitingChanged(bool isWaiting);
    void reasonChanged();

private:
    void handleState(Link::State state);
    void wait();
    void watchFolders();
    void end();
    void attempt();
    void handleFailedAttempt();

    SerialLink *m_link;
    QString m_portName;
    SerialPorts::Identity m_identity;
    QDateTime m_since;
    QString m_reason;
    QTimer m_timer;
    std::unique_ptr<QFileSystemWatcher> m_watcher; // while waiting
    int m_failedAttempts = 0;
    bool m_wasOpen = false; // the link; it has not been closed since
    bool m_isEnabled = false;
    bool m_isHeld = false;
};
