#pragma once

// Decides when links are read: in one turn of the event loop not more than
// leaves the window responsive, and nothing while too much is waiting to be
// shown. Unread bytes stay with the system, and TCP throttles the sender.

#include <QTimer>
#include <functional>

class Link;

class ReadGate : public QObject
{
    Q_OBJECT

public:
    // backlog: the bytes that are waiting to be shown.
    explicit ReadGate(std::function<qint64()> backlog, QObject *parent = nullptr);

    // While the backlog is larger, nothing is read.
    void setMaxBacklog(qint64 bytes) { m_maxBacklog = bytes; }

    // The link is read while the gate is open, and its bytes count.
    void control(Link *link);

    bool isOpen() const { return !m_timer.isActive(); }
    // So many bytes were read from something that is not a link.
    void taken(qint64 bytes);

signals:
    void closed();
    void opened();

private:
    void tryToOpen();

    std::function<qint64()> m_backlog;
    QTimer m_timer;
    qint64 m_maxBacklog = 0;
    qint64 m_cost = 0;
};
