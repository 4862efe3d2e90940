#include "quitguard.h"

#include "qtwidgetbase.h"

#include <QDebug>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>

QuitGuard::QuitGuard(QObject *parent)
    : QObject(parent)
{
}

bool QuitGuard::mayQuit()
{
    switch (m_state) {
    case State::Agreed:
        return true;
    case State::Closing:
        if (m_wait)
            m_wait->quit();
        return false;
    case State::Asking:
        return false;
    case State::Open:
        break;
    }
    m_sessionEnds = false;
    return ask() && closeAndSave();
}

bool QuitGuard::mayEndSession()
{
    if (m_state != State::Open)
        return m_state == State::Agreed;
    m_sessionEnds = ask() && save();
    m_state = State::Open;
    return m_sessionEnds;
}

void QuitGuard::end()
{
    if (m_state == State::Open && m_sessionEnds)
        closeAndSave();
    else
        mayQuit();
}

bool QuitGuard::ask()
{
    m_state = State::Asking;
    for (QtWidgetBase *page : qAsConst(m_pages)) {
        if (!page->mayClose()) {
            m_state = State::Open;
            return false;
        }
    }
    return true;
}

bool QuitGuard::closeAndSave()
{
    m_state = State::Closing;
    for (QtWidgetBase *page : qAsConst(m_pages))
        page->closeLinks();
    waitUntilClosed();
    return save();
}

bool QuitGuard::save()
{
    for (QtWidgetBase *page : qAsConst(m_pages)) {
        if (!page->saveBeforeExit()) {
            m_state = State::Open;
            return false;
        }
    }
    m_state = State::Agreed;
    return true;
}

bool QuitGuard::allClosed() const
{
    return std::all_of(m_pages.begin(), m_pages.end(),
                       [](const QtWidgetBase *page) { return page->isClosed(); });
}

void QuitGuard::waitUntilClosed()
{
    if (allClosed())
        return;
    QEventLoop loop;
    m_wait = &loop;
    for (QtWidgetBase *page : qAsConst(m_pages))
        connect(page, &QtWidgetBase::signalClosed, &loop, [this, &loop] {
            if (allClosed())
                loop.quit();
        });
    QTimer::singleShot(closeLimitMs, &loop, &QEventLoop::quit);
    emit waiting(true);
    loop.exec();
    emit waiting(false);
    if (!allClosed())
        qWarning() << "quitting with links that are not closed";
}
