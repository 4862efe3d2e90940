#include "noticelog.h"

bool NoticeLog::add(const PostedNotice &notice)
{
    m_recent.append(notice);
    if (m_recent.size() > remembered)
        m_recent.removeFirst();
    if (m_holding && !notice.isError()) {
        m_waiting = notice; // only the newest one still says how things are
        m_hasWaiting = true;
        return false;
    }
    m_current = notice;
    m_holding = notice.isError();
    m_hasWaiting = false;
    return true;
}

void NoticeLog::endCurrent()
{
    m_current = {};
    m_holding = false;
    m_hasWaiting = false;
}

bool NoticeLog::endHold()
{
    m_holding = false;
    if (!m_hasWaiting)
        return false;
    m_current = m_waiting;
    m_hasWaiting = false;
    return true;
}
