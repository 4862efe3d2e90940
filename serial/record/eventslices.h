#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

// Lets timers and sockets run while a long file is written, but no input of the
// user.
class EventSlices
{
public:
    EventSlices() { m_clock.start(); }
    void runIfDue()
    {
        if (m_clock.elapsed() < maxStretchMs)
            return;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        m_clock.start();
    }
    void wait()
    {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
        m_clock.start();
    }

private:
    static constexpr int maxStretchMs = 16; // between two looks at the event loop

    QElapsedTimer m_clock;
};
