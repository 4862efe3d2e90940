#include "shell/window/quitguard.h"

#include "shell/base/qtwidgetbase.h"

QuitGuard::QuitGuard(const QVector<QtWidgetBase *> &pages)
    : m_pages(pages)
{
}

bool QuitGuard::mayQuit()
{
    if (m_state != State::Open)
        return m_state == State::Agreed;
    m_state = State::Asking;
    for (QtWidgetBase *page : qAsConst(m_pages)) {
        if (!page->prepareToClose()) {
            m_state = State::Open;
            return false;
        }
    }
    m_state = State::Agreed;
    return true;
}
