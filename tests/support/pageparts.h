#pragma once

// What the tests of every page have: the page, its folder, its notices, and a
// way to its widgets.

#include <QAbstractButton>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>

template <class Page> class PageParts
{
protected:
    template <class Widget> Widget *child(const char *name) const
    {
        return m_page->template findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *button) const { child<QAbstractButton>(button)->click(); }
    QString lastNotice() const
    {
        return m_notices->isEmpty() ? QString() : m_notices->last().at(0).toString();
    }
    int lastKind() const { return m_notices->isEmpty() ? -1 : m_notices->last().at(1).toInt(); }

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<Page> m_page;
    std::unique_ptr<QSignalSpy> m_notices;
};
