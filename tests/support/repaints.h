#pragma once

#include <QtTest>
#include <QtWidgets>

#include <functional>

// Whether a change makes a widget that is shown paint itself again.
inline bool repaints(QWidget *widget, const std::function<void()> &change)
{
    struct Painted : QObject
    {
        bool eventFilter(QObject *, QEvent *event) override
        {
            isPainted = isPainted || event->type() == QEvent::Paint;
            return false;
        }
        bool isPainted = false;
    } painted;
    if (!QTest::qWaitForWindowExposed(widget->window()))
        return false;
    QCoreApplication::processEvents();
    widget->installEventFilter(&painted);
    change();
    return QTest::qWaitFor([&painted] { return painted.isPainted; }, 20000);
}
