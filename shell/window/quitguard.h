#pragma once

// Leads the pages through the end of the program, on whatever way out the user
// takes: all are asked, then all close their links, then all save (see
// QtWidgetBase). Each is asked once; after a refusal the next attempt asks all
// again.

#include <QObject>
#include <QPointer>
#include <QVector>

class QEventLoop;
class QtWidgetBase;

class QuitGuard : public QObject
{
    Q_OBJECT

public:
    static constexpr int closeLimitMs = 12000; // longer than a page needs; then links are closed or not

    explicit QuitGuard(QObject *parent = nullptr);

    void setPages(const QVector<QtWidgetBase *> &pages) { m_pages = pages; }

    // Takes all steps; waits in an event loop where links need time to close.
    // True when the program may end. False keeps it open: a page refused, or
    // is being asked at this moment. A call during the wait ends the wait.
    bool mayQuit();

    // The session is about to end, which another program may cancel: asks and
    // saves, leaves the links open, and asks again the next time.
    bool mayEndSession();

    // The event loop has ended. Takes the steps that are left.
    void end();

    // The program stays open although it might have ended.
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
