#pragma once

// Connects a client again when its connection has ended, was refused or timed out,
// and not when its owner closed it. Between the attempts, and during each, the link
// is not open and accepts nothing.

#include "retrydelay.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>

class TcpClientLink;

class TcpReconnector : public QObject
{
    Q_OBJECT

public:
    // Made before others listen to the link, so that these find it informed.
    explicit TcpReconnector(TcpClientLink *link, QObject *parent = nullptr);

    // Off at first. Waiting ends where it is switched off.
    void setEnabled(bool isEnabled);
    bool isEnabled() const { return m_isEnabled; }

    // From the failure until the link is open or closed by its owner.
    bool isReconnecting() const { return m_isReconnecting; }
    // For the next attempt; not while it is made.
    bool isWaiting() const { return m_timer.isActive(); }
    QDateTime since() const { return m_since; }
    int failedAttempts() const { return m_failedAttempts; } // since then
    QString reason() const { return m_reason; }             // of the last failure

    // Ends it, an attempt that is being made included.
    void cancel();

public slots:
    void attempt(); // at the end of the waiting

signals:
    // An attempt has failed for another reason than the one before.
    void reasonChanged();

private:
    void handleState();
    void wait();

    TcpClientLink *m_link;
    RetryDelay m_delay;
    QTimer m_timer; // until the next attempt
    QTimer m_limit; // of an attempt
    QDateTime m_since;
    QString m_reason;
    int m_failedAttempts = 0;
    bool m_isEnabled = false;
    bool m_isReconnecting = false;
};
