#include "slicedtask.h"

#include <QThread>
#include <limits>

namespace {
constexpr qint64 kSliceMs = 8; // and as much for drawing make a frame
constexpr int kWaitMs = 8;
constexpr qint64 kProgressMs = 100; // more often, drawing it costs too much
} // namespace

SlicedTask::SlicedTask(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    connect(&m_timer, &QTimer::timeout, this, [this] { runSlice(kSliceMs, false); });
}

bool SlicedTask::start(const Work &work)
{
    if (m_running)
        return false;
    m_work = work;
    m_running = true;
    m_isAnnounced = false;
    m_sinceProgress.start();
    runSlice(m_work.firstSliceMs, true);
    if (m_running && !m_isAnnounced) {
        m_isAnnounced = true;
        emit started(m_work.name);
        m_timer.start(0);
    }
    return true;
}

bool SlicedTask::isStoppable() const
{
    return m_running && (!m_work.mayStop || m_work.mayStop());
}

void SlicedTask::runToEnd()
{
    if (m_running)
        runSlice(std::numeric_limits<qint64>::max(), true);
}

void SlicedTask::stop()
{
    if (isStoppable())
        finish(false);
}

void SlicedTask::runSlice(qint64 milliseconds, bool waits)
{
    QElapsedTimer clock;
    clock.start();
    Step step = Step::Running;
    do {
        step = m_work.step();
        if (step == Step::Done) {
            finish(true);
            return;
        }
        if (step == Step::Waiting && waits)
            QThread::msleep(1);
    } while (clock.elapsed() < milliseconds && (step == Step::Running || waits));
    const int pause = step == Step::Waiting ? kWaitMs : 0;
    if (m_timer.interval() != pause)
        m_timer.setInterval(pause);
    if (m_sinceProgress.hasExpired(kProgressMs)) {
        m_sinceProgress.start();
        emit progressed(m_work.permille());
    }
}

void SlicedTask::finish(bool done)
{
    m_timer.stop();
    m_running = false;
    const Work work = std::move(m_work);
    m_work = Work();
    emit ended();
    work.ended(done);
}
