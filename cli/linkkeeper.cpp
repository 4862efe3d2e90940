#include "linkkeeper.h"

#include <utility>

namespace {

constexpr int kRetryMs = 100;

} // namespace

LinkKeeper::LinkKeeper(const Port &port, QObject *parent)
    : QObject(parent)
    , m_port(port)
    , m_link(port.makeLink())
{
    m_retry.setInterval(kRetryMs);
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &LinkKeeper::tryToOpen);
    connect(m_link.get(), &Link::stateChanged, this, &LinkKeeper::handleState);
}

void LinkKeeper::open()
{
    m_isClosing = false;
    tryToOpen();
}

void LinkKeeper::close()
{
    m_isClosing = true;
    m_retry.stop();
    if (m_link->state() == Link::State::Closed)
        emit closed();
    else
        m_link->close();
}

void LinkKeeper::tryToOpen()
{
    m_wasOpen = false;
    if (!m_port.open(m_link.get()))
        handleFailure(m_link->reason());
}

void LinkKeeper::handleState(Link::State state)
{
    if (state == Link::State::Open) {
        m_wasOpen = true;
        m_isWaiting = false;
        emit opened();
    }
    if (state != Link::State::Closed)
        return;
    if (m_isClosing) {
        emit closed();
        return;
    }
    const QString reason = m_link->reason();
    if (m_wasOpen)
        emit lost(reason);
    if (!m_wasOpen || m_keepsTrying)
        handleFailure(reason);
}

void LinkKeeper::handleFailure(const QString &reason)
{
    if (m_isClosing)
        return;
    if (!m_keepsTrying) {
        emit failed(reason);
        return;
    }
    if (!std::exchange(m_isWaiting, true))
        emit waiting(reason);
    m_retry.start();
}
