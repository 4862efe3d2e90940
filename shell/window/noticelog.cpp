#include "noticelog.h"

bool NoticeLog::add(const PostedNotice &notice)
{
    m_recent.append(notice);
    if (m_recent.size() > maxRecent)
        m_recent.removeFirst();
    if (m_holding && !notice.isError()) {
        m_pending = notice; // only the newest one is up to date
        m_hasPending = true;
        return false;
    }
    m_current = notice;
    m_holding = notice.isError();
    m_hasPending = false;
    return true;
}

void NoticeLog::endCurrent()
{
    m_current = {};
    m_holding = false;
}

bool NoticeLog::endHold()
{
    m_holding = false;
    if (!m_hasPending)
        return false;
    m_current = m_pending;
    return true;
}
