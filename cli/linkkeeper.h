#pragma once

// Opens the link to a port and, where that is wanted, again and again until the
// port is there or is back.

#include "port.h"

#include <QObject>
#include <QTimer>

class LinkKeeper : public QObject
{
    Q_OBJECT

public:
    explicit LinkKeeper(const Port &port, QObject *parent = nullptr);

    Link *link() const { return m_link.get(); }
    // While true, a port that cannot be opened or is lost is tried again.
    void setKeepsTrying(bool keepsTrying) { m_keepsTrying = keepsTrying; }
    bool keepsTrying() const { return m_keepsTrying; }

    void open();
    void close(); // a second call drops what has not left

signals:
    void opened();
    void waiting(const QString &reason); // once, until it is open
    void failed(const QString &reason);  // it could not be opened
    void lost(const QString &reason);    // an open one went away; before waiting()
    void closed();                       // by close()

private:
    void tryToOpen();
    void handleState(Link::State state);
    void handleFailure(const QString &reason);

    Port m_port;
    std::unique_ptr<Link> m_link;
    QTimer m_retry;
    bool m_keepsTrying = false;
    bool m_isClosing = false;
    bool m_wasOpen = false; // since the last attempt
    bool m_isWaiting = false;
};
