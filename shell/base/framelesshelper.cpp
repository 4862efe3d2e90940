#include "framelesshelper.h"

#include "framegeometry.h"
#include "skin.h"
#include "windowsframe.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStyleHints>
#include <QStyleOption>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace {
// How long a window manager may take to maximise before we do it ourselves.
constexpr int maximizeGraceMs = 150;
} // namespace

FramelessHelper::FramelessHelper(QWidget *window)
    : QObject(window)
    , m_window(window)
{
    window->setWindowFlags(window->windowFlags() | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint |
                           Qt::WindowMinMaxButtonsHint);
    window->installEventFilter(this);
#ifdef Q_OS_WIN
    m_windowsFrame = std::make_unique<WindowsFrame>(window);
#endif
}

FramelessHelper::~FramelessHelper()
{
    showCursor({});
}

void FramelessHelper::setMoveHandle(QWidget *handle)
{
    if (m_moveHandle)
        m_moveHandle->removeEventFilter(this);
    m_moveHandle = handle;
    handle->installEventFilter(this);
}

void FramelessHelper::setResizable(bool resizable)
{
    m_resizable = resizable;
    if (!resizable)
        showCursor({});
    if (m_windowsFrame)
        m_windowsFrame->setResizable(resizable);
}

void FramelessHelper::paintOutline(QWidget *window)
{
    QPainter painter(window);
    QStyleOption option;
    option.initFrom(window);
    window->style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, window);
    painter.setPen(Skin::palette().outline);
    painter.drawRect(window->rect().adjusted(0, 0, -1, -1));
}

void FramelessHelper::minimize()
{
    m_window->showMinimized();
}

bool FramelessHelper::isMaximized() const
{
    return m_fillsWorkArea || m_window->isMaximized();
}

void FramelessHelper::toggleMaximized()
{
    if (!m_resizable)
        return;
    if (isMaximized()) {
        restore(m_normalGeometry);
    } else {
        m_normalGeometry = m_window->geometry();
        m_window->showMaximized();
        QTimer::singleShot(maximizeGraceMs, this, &FramelessHelper::sltFillWorkArea);
    }
}

// Resizing a maximised widget makes it a normal one for Qt, so the state is
// kept here.
void FramelessHelper::sltFillWorkArea()
{
    if (!m_window->isMaximized() || !m_window->screen())
        return;
    const QRect workArea = m_window->screen()->availableGeometry();
    // A window manager may leave out what its panels cover; that is still a
    // maximised window. One that did not grow at all was not maximised.
    if (m_window->geometry() != m_normalGeometry || m_normalGeometry == workArea)
        return;
    m_fillsWorkArea = true;
    m_window->setGeometry(workArea);
}

// With an invalid rectangle the window manager decides.
void FramelessHelper::restore(QRect normal)
{
    m_fillsWorkArea = false;
    m_window->showNormal();
    if (normal.isValid())
        m_window->setGeometry(normal);
    m_normalGeometry = QRect();
    emit maximizedChanged(isMaximized());
}

bool FramelessHelper::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window) {
        if (event->type() == QEvent::Show || event->type() == QEvent::WinIdChange)
            attachToHandle();
        else if (event->type() == QEvent::WindowStateChange)
            emit maximizedChanged(isMaximized());
        return false;
    }
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove: {
        auto *mouse = static_cast<QMouseEvent *>(event);
        return watched == m_handle ? handleWindowMouse(mouse) : handleTitleMouse(mouse);
    }
    case QEvent::Leave:
        if (watched == m_handle)
            showCursor({});
        return false;
    default:
        return false;
    }
}

// All mouse events of the window pass its QWindow before they are given to the
// child under the pointer, so the edge zone works over every child.
void FramelessHelper::attachToHandle()
{
    QWindow *handle = m_window->windowHandle();
    if (!handle || handle == m_handle)
        return;
    m_handle = handle;
    handle->installEventFilter(this);
}

bool FramelessHelper::handleWindowMouse(QMouseEvent *event)
{
    if (m_drag == Drag::Move || m_drag == Drag::Resize) {
        if (event->type() == QEvent::MouseMove && (event->buttons() & Qt::LeftButton))
            continueDrag(event->globalPos());
        else
            m_drag = Drag::None;
        return true;
    }
    if (!m_resizable || isMaximized() || m_window->isFullScreen() || QApplication::activePopupWidget())
        return false;
    const Qt::Edges edges = FrameGeometry::edgesAt(event->pos(), m_window->size(), edgeWidth);
    switch (event->type()) {
    case QEvent::MouseMove:
        if (event->buttons() != Qt::NoButton)
            return false;
        showCursor(edges);
        return bool(edges);
    case QEvent::MouseButtonPress:
        return edges && event->button() == Qt::LeftButton && startResize(edges, event->globalPos());
    default:
        return false;
    }
}

bool FramelessHelper::handleTitleMouse(QMouseEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (event->button() == Qt::LeftButton) {
            m_drag = Drag::Pressed;
            m_dragStart = event->globalPos();
        }
        return false;
    case QEvent::MouseMove:
        if (m_drag == Drag::Pressed && (event->buttons() & Qt::LeftButton) &&
            (event->globalPos() - m_dragStart).manhattanLength() >=
                QGuiApplication::styleHints()->startDragDistance())
            startMove(event->globalPos());
        return false;
    case QEvent::MouseButtonRelease:
        m_drag = Drag::None;
        return false;
    case QEvent::MouseButtonDblClick:
        if (event->button() != Qt::LeftButton || !m_resizable)
            return false;
        toggleMaximized();
        return true;
    default:
        return false;
    }
}

void FramelessHelper::startMove(const QPoint &pointer)
{
    m_drag = Drag::None;
    if (isMaximized()) {
        const QSize normal =
            (m_normalGeometry.isValid() ? m_normalGeometry : m_window->normalGeometry()).size();
        restore(FrameGeometry::pulledOff(normal, m_window->geometry(), pointer));
        m_dragStart = pointer;
    }
    if (m_handle && m_handle->startSystemMove())
        return;
    m_drag = Drag::Move;
    m_geometryAtStart = m_window->geometry();
    continueDrag(pointer);
}

bool FramelessHelper::startResize(Qt::Edges edges, const QPoint &pointer)
{
    if (m_handle->startSystemResize(edges))
        return true;
    m_drag = Drag::Resize;
    m_dragEdges = edges;
    m_dragStart = pointer;
    m_geometryAtStart = m_window->geometry();
    return true;
}

void FramelessHelper::continueDrag(const QPoint &pointer)
{
    const QPoint delta = pointer - m_dragStart;
    if (m_drag == Drag::Move) {
        m_window->move(m_geometryAtStart.topLeft() + delta);
        return;
    }
    const QSize smallest = m_window->minimumSize().expandedTo(m_window->minimumSizeHint());
    m_window->setGeometry(
        FrameGeometry::resized(m_geometryAtStart, m_dragEdges, delta, smallest, m_window->maximumSize()));
}

// An override cursor, because the cursors of children would win over one of
// the window.
void FramelessHelper::showCursor(Qt::Edges edges)
{
    if (edges == m_cursorEdges)
        return;
    m_cursorEdges = edges;
    if (m_cursorShown)
        QApplication::restoreOverrideCursor();
    m_cursorShown = bool(edges);
    if (m_cursorShown)
        QApplication::setOverrideCursor(FrameGeometry::cursorFor(edges));
}
