#include "qtmainwindow.h"

#include "framelesshelper.h"
#include "qttitlebar.h"

QtMainWindow::QtMainWindow(QWidget *parent)
    : QWidget(parent)
    , m_frame(new FramelessHelper(this))
{
    setMinimumSize(800, 500);
}

void QtMainWindow::attachTitleBar(QtTitleBar *titleBar)
{
    m_frame->setMoveHandle(titleBar);
    connect(titleBar, &QtTitleBar::signalMinimizeWindow, m_frame, &FramelessHelper::minimize);
    connect(titleBar, &QtTitleBar::signalMaximizeWindow, m_frame, &FramelessHelper::toggleMaximized);
    connect(m_frame, &FramelessHelper::maximizedChanged, titleBar, &QtTitleBar::setMaximized);
}

void QtMainWindow::paintEvent(QPaintEvent *)
{
    FramelessHelper::paintOutline(this);
}
