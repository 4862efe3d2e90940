#include "tcpreconnector.h"

#include "tcpclientlink.h"

#include <utility>

namespace {

// The system repeats an unanswered attempt at ever longer intervals: a board that is
// back hears of a new one sooner.
constexpr int kMaxAttemptMs = 10000;

qint64 nowMs()
{
    return Link::nowUs() / 1000;
}

} // namespace

TcpReconnector::TcpReconnector(TcpClientLink *link, QObject *parent)
    : QObject(parent)
    , m_link(link)
    , m_timer(this)
    , m_limit(this)
{
    for (QTimer *timer : {&m_timer, &m_limit})
        timer->setSingleShot(true);
    m_limit.setInterval(kMaxAttemptMs);
    connect(m_link, &Link::stateChanged, this, &TcpReconnector::handleState);
    connect(&m_timer, &QTimer::timeout, this, &TcpReconnector::attempt);
    connect(&m_limit, &QTimer::timeout, m_link, &TcpClientLink::timeOut);
}

void TcpReconnector::setEnabled(bool isEnabled)
{
    m_isEnabled = isEnabled;
    if (!isEnabled)
        cancel();
}

void TcpReconnector::cancel()
{
    m_timer.stop();
    if (std::exchange(m_isReconnecting, false) && m_link->state() == Link::State::Opening)
        m_link->close();
}

void TcpReconnector::handleState()
{
    switch (m_link->state()) {
    case Link::State::Opening:
        if (!m_isReconnecting)
            m_delay.reset(); // by its owner
        break;
    case Link::State::Open:
        m_isReconnecting = false;
        m_delay.opened(nowMs());
        m_limit.stop();
        break;
    case Link::State::Closing:
        break;
    case Link::State::Closed:
        m_limit.stop();
        if (m_isEnabled && !m_link->reason().isEmpty())
            wait();
        else
            m_isReconnecting = false;
        break;
    }
}

void TcpReconnector::wait()
{
    const bool isRetry = std::exchange(m_isReconnecting, true);
    m_failedAttempts = isRetry ? m_failedAttempts + 1 : 0;
    if (!isRetry)
        m_since = QDateTime::currentDateTime();
    m_timer.start(m_delay.failed(nowMs()));
    if (std::exchange(m_reason, m_link->reason()) != m_reason && isRetry)
        emit reasonChanged();
}

void TcpReconnector::attempt()
{
    if (!m_isReconnecting || m_link->state() != Link::State::Closed)
        return;
    m_timer.stop();
    m_limit.start();
    m_link->open(m_link->settings());
}
