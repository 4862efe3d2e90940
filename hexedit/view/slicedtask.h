#pragma once

// Work of unknown size, done in slices between the events, one piece of work at
// a time. What fits into one slice is done at once.

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

class SlicedTask : public QObject
{
    Q_OBJECT

public:
    struct Work
    {
        QString name;                       // for the user: what is being done
        std::function<bool()> step;         // a few milliseconds; true when it is done
        std::function<int()> permille;      // how far it is
        std::function<void(bool)> finished; // true when it was done, false when stopped
    };

    explicit SlicedTask(QObject *parent = nullptr);

    // False while other work is being done.
    bool start(const Work &work);
    bool isRunning() const { return m_running; }
    QString name() const { return m_work.name; } // of what is being done

public slots:
    void stop();

signals:
    void started(const QString &name);
    void progressed(int permille);
    void ended();

private:
    void runSlice();
    void finish(bool done);

    Work m_work;
    QTimer m_timer;
    QElapsedTimer m_sinceProgress;
    bool m_running = false;
};
