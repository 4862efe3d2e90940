#pragma once

// Long work of the editor (opening, searching, replacing, pasting, checksums,
// saving), done in slices between the events, one piece of work at a time.
// Owns the work and its timer; knows nothing of what the work does.

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

class SlicedTask : public QObject
{
    Q_OBJECT

public:
    enum class Step {
        Running,
        Waiting, // for a disk: there is nothing to do for some milliseconds
        Done,
    };
    struct Work
    {
        QString name;                    // for the user: what is being done
        std::function<Step()> step;      // takes a few milliseconds
        std::function<int()> permille;   // how far it is
        std::function<void(bool)> ended; // true when it was done, false when stopped
        std::function<bool()> mayStop;   // empty: it may be stopped at any time
        qint64 firstSliceMs = 25;        // not felt; a small file is saved within it
    };

    explicit SlicedTask(QObject *parent = nullptr);

    // Does the first slice at once, which is all of a short piece of work.
    // False while other work is being done. Work that is destroyed with the
    // task does not end.
    bool start(const Work &work);
    bool isRunning() const { return m_running; }
    bool isStoppable() const;
    QString name() const { return m_work.name; }

    // Does the rest without the event loop, where the program is about to end.
    void runToEnd();

public slots:
    void stop(); // where it may be stopped

signals:
    void started(const QString &name); // work that takes more than the first slice
    void progressed(int permille);
    void ended();

private:
    void runSlice(qint64 milliseconds, bool waits);
    void finish(bool done);

    Work m_work;
    QTimer m_timer;
    QElapsedTimer m_sinceProgress;
    bool m_running = false;
    bool m_isAnnounced = false;
};
