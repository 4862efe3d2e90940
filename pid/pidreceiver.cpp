#include "pidreceiver.h"

namespace {

constexpr int kPatienceMs = 1000;

// A run ends at a bad frame, and while display is stopped at each actual value;
// what follows waits for the next arrival. A board that sends several frames
// at a time would fill the memory with them and be plotted late, so with more
// than this waiting the next run follows at once.
constexpr int kMostBacklog = 256;

} // namespace

PidReceiver::PidReceiver(const Handler &handler, QObject *parent)
    : QObject(parent)
    , m_handler(handler)
    , m_patience(this)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(kPatienceMs);
    connect(&m_patience, &QTimer::timeout, this, &PidReceiver::losePatience);
}

void PidReceiver::parse()
{
    for (int before = m_parser.size(); !run() && m_parser.size() > kMostBacklog;) {
        if (m_parser.size() == before)
            break; // a length of 0 or less stays where it is
        before = m_parser.size();
    }
    const bool stands = m_parser.isOverlong() || (m_parser.isBlocked() && !m_blockedTold);
    if (stands && !m_patience.isActive())
        m_patience.start();
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

void PidReceiver::losePatience()
{
    if (m_parser.isBlocked()) {
        m_blockedTold = true;
        emit blocked();
    } else if (m_parser.isOverlong()) {
        m_parser.skipHead();
        m_late = true;
        parse();
        m_late = false;
        emit lengthGivenUp();
    }
}

void PidReceiver::clear()
{
    m_parser.clear();
    m_patience.stop();
    m_blockedTold = false;
}
