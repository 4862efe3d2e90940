#pragma once

// Fits a model to a step in a thread of its own, since that may take a tenth of a
// second: the values go in and the model comes out, nothing is shared. Of steps that
// are asked for while one is fitted only the last is fitted.

#include "plantfit.h"

#include <QObject>

#include <memory>
#include <optional>

class QThread;

class FitJob : public QObject
{
    Q_OBJECT

public:
    explicit FitJob(QObject *parent = nullptr);
    ~FitJob() override; // waits for the thread

    void start(const Step &step, const StepInput &input);
    bool isRunning() const { return m_thread != nullptr; }

signals:
    void finished(const PlantFit &fit);

private:
    struct Work
    {
        Step step;
        StepInput input;
    };

    void run(const Work &work);

    std::unique_ptr<QThread> m_thread;
    std::optional<Work> m_next;
};
