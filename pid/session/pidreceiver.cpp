#include "pidreceiver.h"

namespace {

constexpr int kFrameTimeoutMs = 1000;

// A run ends at a bad frame, and while display is paused at each actual value;
// what follows waits for the next arrival. A board that sends several frames
// at a time would fill the memory with them, so with more bytes than this
// pending the next run follows at once.
constexpr int kMaxBacklog = 256;

} // namespace

PidReceiver::PidReceiver(const Handler &handler, QObject *parent)
    : QObject(parent)
    , m_handler(handler)
    , m_timeout(this)
{
    m_timeout.setSingleShot(true);
    m_timeout.setInterval(kFrameTimeoutMs);
    connect(&m_timeout, &QTimer::timeout, this, &PidReceiver::timeOut);
}

void PidReceiver::parse()
{
    for (int before = m_parser.size(); !run() && m_parser.size() > kMaxBacklog;) {
        if (m_parser.size() == before)
            break; // a length of 0 or less is never removed
        before = m_parser.size();
    }
    const bool isStuck = m_parser.isOverlong() || (m_parser.isBlocked() && !m_blockedReported);
    if (isStuck && !m_timeout.isActive())
        m_timeout.start();
}

// True when no complete frame is left.
bool PidReceiver::run()
{
    PidReport report;
    for (;;) {
        switch (m_parser.next(&report)) {
        case PidParser::Outcome::Waiting:
            return true;
        case PidParser::Outcome::Dropped:
            return false;
        case PidParser::Outcome::Report:
            if (!m_handler(report))
                return false;
        }
    }
}

void PidReceiver::timeOut()
{
    if (m_parser.isBlocked()) {
        m_blockedReported = true;
        emit blocked();
    } else if (m_parser.isOverlong()) {
        m_parser.skipHead();
        parse();
        emit lengthSkipped();
    }
}

void PidReceiver::clear()
{
    m_parser.clear();
    m_timeout.stop();
    m_blockedReported = false;
}
