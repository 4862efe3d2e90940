#pragma once

// How long the user-interface thread was held up: the longest time between two
// beats of a timer of 5 ms, less its period.

#include <QElapsedTimer>
#include <QTimer>

class Heartbeat
{
public:
    Heartbeat();

    void start() { m_timer.start(); }
    void skip() { m_since.invalidate(); }    // what has just been done is no stall of the program's
    double worst() const { return m_worst; } // milliseconds

private:
    QTimer m_timer;
    QElapsedTimer m_since;
    double m_worst = 0;
};
