#pragma once

// How long the user-interface thread was blocked: the longest time between two
// beats of a timer of 5 ms, less its period.

#include <QElapsedTimer>
#include <QTimer>

#include <utility>

class Heartbeat
{
public:
    Heartbeat();

    void start() { m_timer.start(); }
    void stop() { m_timer.stop(); }
    void skip() { m_since.invalidate(); }    // what has just been done is no stall of the program's
    double worst() const { return m_worst; } // milliseconds
    double takeWorst() { return std::exchange(m_worst, 0); }

private:
    QTimer m_timer;
    QElapsedTimer m_since;
    double m_worst = 0;
};
