#include "readgate.h"

namespace {

// A message costs about as much as this many bytes, whatever its size; some
// hundred messages, or a quarter of a megabyte, take a few milliseconds.
constexpr qint64 kMessageCost = 1024;
constexpr qint64 kMostCost = 256 * 1024;

constexpr qint64 kDefaultBacklog = 2 * 1024 * 1024;
constexpr int kLookMs = 5;

} // namespace

ReadGate::ReadGate(std::function<qint64()> backlog, QObject *parent)
    : QObject(parent)
    , m_backlog(std::move(backlog))
    , m_timer(this)
    , m_mostBacklog(kDefaultBacklog)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ReadGate::tryToOpen);
}

void ReadGate::taken(qint64 bytes)
{
    m_cost += bytes + kMessageCost;
    if (m_cost < kMostCost || !isOpen())
        return;
    m_timer.start(0);
    emit closed();
}

void ReadGate::tryToOpen()
{
    if (m_backlog() > m_mostBacklog) {
        m_timer.start(kLookMs);
        return;
    }
    m_cost = 0;
    emit opened();
}
