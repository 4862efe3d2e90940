#pragma once

// Quits the program in steps, the same for all ways to quit: all pages are
// asked, then all close their links, then all save (see QtWidgetBase). Each page
// is asked once; after a refusal the next attempt asks all again.

#include <QObject>
#include <QPointer>
#include <QVector>

class QEventLoop;
class QtWidgetBase;

class QuitGuard : public QObject
{
    Q_OBJECT

public:
    static constexpr int closeLimitMs = 12000; // longer than a page needs; then the program quits

    explicit QuitGuard(QObject *parent = nullptr);

    void setPages(const QVector<QtWidgetBase *> &pages) { m_pages = pages; }

    // Runs all steps; waits in an event loop where links need time to close.
    // True when the program may quit. False keeps it open: a page refused, or a
    // question is open. A call during the wait ends the wait.
    bool mayQuit();

    // The session is about to end, which another program may cancel: asks and
    // saves, leaves the links open, and asks again the next time.
    bool mayEndSession();

    // The event loop has ended. Runs the remaining steps.
    void end();

    // The program stays open although it was allowed to quit.
    void stay() { m_state = State::Open; }

signals:
    // Links take time to close, or no longer do.
    void waiting(bool waits);

private:
    enum class State { Open, Asking, Closing, Agreed };

    bool ask();
    bool save();
    bool closeAndSave();
    bool allClosed() const;
    void waitUntilClosed();

    QVector<QtWidgetBase *> m_pages; // not owned
    State m_state = State::Open;
    bool m_sessionEnds = false; // all agreed to that
    QPointer<QEventLoop> m_wait;
};
