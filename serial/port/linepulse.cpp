#include "linepulse.h"

#include "seriallink.h"

namespace {

constexpr int kResetMs = 100;
constexpr int kBootMs = 100; // the boot line is read when the reset ends
constexpr int kBreakMs = 250;

} // namespace

LinePulse::LinePulse(SerialLink *link, QObject *parent)
    : QObject(parent)
    , m_link(link)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &LinePulse::next);
    // A board that is a USB device itself goes with its reset.
    connect(m_link, &Link::stateChanged, &m_timer, &QTimer::stop);
}

void LinePulse::reset()
{
    begin({{false, true, kResetMs}, {false, false, 1}});
}

void LinePulse::enterBootLoader()
{
    begin({{false, true, kResetMs}, {true, false, kBootMs}});
}

void LinePulse::sendBreak()
{
    if (isRunning() || !m_link->isOpen())
        return;
    m_isBreak = true;
    m_link->setBreak(true);
    m_timer.start(kBreakMs);
}

void LinePulse::begin(const QVector<Step> &steps)
{
    if (isRunning() || !m_link->isOpen())
        return;
    m_isBreak = false;
    m_dtrBefore = m_link->settings().dtr;
    m_rtsBefore = m_link->isRtsRaised();
    m_steps = steps;
    m_step = 0;
    m_timer.start(0);
}

void LinePulse::next()
{
    if (m_isBreak || m_step == m_steps.size()) {
        end();
        return;
    }
    const Step &step = m_steps.at(m_step++);
    m_link->driveLines(step.dtr, step.rts);
    m_timer.start(step.ms);
}

void LinePulse::end()
{
    if (m_isBreak)
        m_link->setBreak(false);
    else
        m_link->driveLines(m_dtrBefore, m_rtsBefore);
    emit finished();
}
