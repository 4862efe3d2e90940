#pragma once

// Decides which notice the status bar shows. An error is shown at once and
// held for a while: information that comes meanwhile waits until the hold is
// over. Keeps the recent notices. Knows no clock: the owner runs the hold.

#include "notice.h"

#include <QDateTime>
#include <QPointer>
#include <QVector>

struct PostedNotice : Notice
{
    QDateTime time;
    QPointer<const QObject> page; // that posted it; null: no page
};

class NoticeLog
{
public:
    static constexpr int remembered = 100;

    // Takes a notice. True when it is now the one to show; the owner then
    // starts the hold if it is an error.
    bool add(const PostedNotice &notice);

    // The hold is over. True when a waiting notice is now the one to show.
    bool endHold();

    // Nothing is to be shown any more; the notice stays among the recent ones.
    void endCurrent();

    bool isHolding() const { return m_holding; }
    const PostedNotice &current() const { return m_current; }
    const QVector<PostedNotice> &recent() const { return m_recent; } // oldest first

private:
    PostedNotice m_current;
    PostedNotice m_waiting;
    bool m_holding = false;
    bool m_hasWaiting = false;
    QVector<PostedNotice> m_recent;
};
