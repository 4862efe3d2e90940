#pragma once

// Decides which notice the status bar shows. An error is shown at once and held
// for a while; information posted during the hold is pending until its end.
// Keeps the recent notices. Knows no clock: the owner times the hold.

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
    static constexpr int maxRecent = 100;

    // Adds a notice. True when it is now the current one; the owner then starts
    // the hold if it is an error.
    bool add(const PostedNotice &notice);

    // Ends the hold. True when the pending notice is now the current one.
    bool endHold();

    // No notice is current any more; the last one stays among the recent ones.
    void endCurrent();

    bool isHolding() const { return m_holding; }
    const PostedNotice &current() const { return m_current; }
    const QVector<PostedNotice> &recent() const { return m_recent; } // oldest first

private:
    PostedNotice m_current;
    PostedNotice m_pending;
    bool m_holding = false;
    bool m_hasPending = false;
    QVector<PostedNotice> m_recent;
};
