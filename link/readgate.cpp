#include "readgate.h"

#include "link.h"

namespace {

// A message of any size costs about as much as this many bytes; some
// hundred messages, or a quarter of a megabyte, take a few milliseconds.
constexpr qint64 kMessageCost = 1024;
constexpr qint64 kMaxCost = 256 * 1024;

constexpr int kRetryMs = 5;

} // namespace

ReadGate::ReadGate(std::function<qint64()> backlog, QObject *parent)
    : QObject(parent)
    , m_backlog(std::move(backlog))
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ReadGate::tryToOpen);
}

void ReadGate::control(Link *link)
{
    link->setReading(isOpen());
    connect(link, &Link::received, this, [this](const QByteArray &bytes) { taken(bytes.size()); });
    connect(this, &ReadGate::closed, link, [link] { link->setReading(false); });
    connect(this, &ReadGate::opened, link, [link] { link->setReading(true); });
}

void ReadGate::taken(qint64 bytes)
{
    m_cost += bytes + kMessageCost;
    if (m_cost < kMaxCost || !isOpen())
        return;
    m_timer.start(0);
    emit closed();
}

void ReadGate::tryToOpen()
{
    if (m_backlog() > m_maxBacklog) {
        m_timer.start(kRetryMs);
        return;
    }
    m_cost = 0;
    emit opened();
}
