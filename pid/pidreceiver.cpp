#include "pid/pidreceiver.h"

namespace {

constexpr int kUnblockMs = 1000;

// A run ends at a bad frame, and while display is stopped at each actual value;
// what follows waits for the next arrival. A board that sends several frames
// at a time would fill the memory with them and be plotted late, so with more
// than this waiting the next run follows at once.
constexpr int kMostBacklog = 256;

} // namespace

PidReceiver::PidReceiver(const Handler &handler, QObject *parent)
    : QObject(parent)
    , m_handler(handler)
    , m_unblock(this)
{
    m_unblock.setSingleShot(true);
    m_unblock.setInterval(kUnblockMs);
    connect(&m_unblock, &QTimer::timeout, this, &PidReceiver::unblock);
}

void PidReceiver::parse()
{
    for (int before = m_parser.size(); !run() && m_parser.size() > kMostBacklog;) {
        if (m_parser.size() == before)
            break; // a length of 0 or less stays where it is
        before = m_parser.size();
    }
    if (m_parser.isBlocked() && !m_unblock.isActive())
        m_unblock.start();
}

// True when everything whole has been used.
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
            if (!m_handler(report, m_late))
                return false;
        }
    }
}

// A false length has kept everything waiting for long enough.
void PidReceiver::unblock()
{
    if (!m_parser.isBlocked())
        return;
    m_parser.skipHead();
    m_late = true;
    parse();
    m_late = false;
    emit lengthGivenUp();
}
