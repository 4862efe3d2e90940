#pragma once

// What the tests of every page have: the page, its folder, its notices, and a
// way to its widgets.

#include "apppaths.h"
#include "settings.h"

#include <QAbstractButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

template <class Page> class PageParts
{
protected:
    // As after installing the program: empty folders, default settings.
    void makePage(int width, int height)
    {
        m_page.reset(); // saves into its own folder
        m_root = std::make_unique<QTemporaryDir>();
        AppPaths::setRoot(m_root->path());
        AppPaths::makeFolders();
        Settings::instance() = Settings();
        m_page = std::make_unique<Page>();
        m_page->resize(width, height);
        m_page->show();
        m_notices = std::make_unique<QSignalSpy>(m_page.get(), &Page::signalNotify);
    }
    template <class Widget> Widget *child(const char *name) const
    {
        return m_page->template findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *button) const { child<QAbstractButton>(button)->click(); }
    // Counts as one click.
    void doubleClick(const char *name) const
    {
        auto *button = child<QAbstractButton>(name);
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::mouseDClick(button, Qt::LeftButton);
        QTest::mouseRelease(button, Qt::LeftButton);
    }
    QString lastNotice() const
    {
        return m_notices->isEmpty() ? QString() : m_notices->last().at(0).toString();
    }
    int lastKind() const { return m_notices->isEmpty() ? -1 : m_notices->last().at(1).toInt(); }

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<Page> m_page;
    std::unique_ptr<QSignalSpy> m_notices;
};
