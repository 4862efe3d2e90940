#include "slicedtask.h"

namespace {
constexpr qint64 kSliceMs = 8;      // and as much for drawing make a frame
constexpr qint64 kProgressMs = 100; // drawing it costs as much as it tells
} // namespace

SlicedTask::SlicedTask(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    connect(&m_timer, &QTimer::timeout, this, &SlicedTask::runSlice);
}

bool SlicedTask::start(const Work &work)
{
    if (m_running)
        return false;
    m_work = work;
    m_running = true;
    m_sinceProgress.start();
    emit started(m_work.name);
    runSlice();
    if (m_running)
        m_timer.start(0);
    return true;
}

void SlicedTask::stop()
{
    if (m_running)
        finish(false);
}

void SlicedTask::runSlice()
{
    QElapsedTimer clock;
    clock.start();
    do {
        if (m_work.step()) {
            finish(true);
            return;
        }
    } while (clock.elapsed() < kSliceMs);
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
    work.finished(done);
}
