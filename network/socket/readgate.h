#pragma once

// Decides when a page goes on reading from its sockets: not more in one turn of
// the event loop than leaves the window usable, and not at all while too much
// waits to be shown. What is not read stays with the system, and TCP holds the
// sender up.

#include <QTimer>
#include <functional>

class ReadGate : public QObject
{
    Q_OBJECT

public:
    // Asked for the bytes that wait to be shown.
    explicit ReadGate(std::function<qint64()> backlog, QObject *parent = nullptr);

    // Above so much backlog nothing is read.
    void setMostBacklog(qint64 bytes) { m_mostBacklog = bytes; }

    bool isOpen() const { return !m_timer.isActive(); }
    // To be told of every message that was read.
    void taken(qint64 bytes);

signals:
    void closed();
    void opened();

private:
    void tryToOpen();

    std::function<qint64()> m_backlog;
    QTimer m_timer;
    qint64 m_mostBacklog;
    qint64 m_cost = 0;
};
