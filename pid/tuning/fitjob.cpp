#include "fitjob.h"

#include <QThread>

FitJob::FitJob(QObject *parent)
    : QObject(parent)
{
}

FitJob::~FitJob()
{
    if (m_thread)
        m_thread->wait();
}

void FitJob::start(const Step &step, const StepInput &input)
{
    if (m_thread)
        m_next = Work{step, input};
    else
        run({step, input});
}

void FitJob::run(const Work &work)
{
    const auto result = std::make_shared<PlantFit>();
    m_thread.reset(QThread::create([work, result] { *result = fitPlant(work.step, work.input); }));
    connect(m_thread.get(), &QThread::finished, this, [this, result] {
        m_thread->wait();
        m_thread.reset();
        const std::optional<Work> next = m_next;
        m_next.reset();
        if (next)
            run(*next);
        else
            emit finished(*result);
    });
    m_thread->start();
}
