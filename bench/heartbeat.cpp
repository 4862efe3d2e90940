#include "heartbeat.h"

Heartbeat::Heartbeat()
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(5);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
        if (m_since.isValid())
            m_worst = qMax(m_worst, static_cast<double>(m_since.nsecsElapsed()) * 1e-6 - m_timer.interval());
        m_since.start();
    });
}
