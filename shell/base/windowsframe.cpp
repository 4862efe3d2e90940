#include "shell/base/windowsframe.h"

#include <QCoreApplication>
#include <QWidget>

#ifdef Q_OS_WIN

#include "shell/base/framegeometry.h"
#include "shell/base/framelesshelper.h"

#include <QWindow>
#include <qt_windows.h>

#include <shellapi.h>

namespace {

// Windows animates, snaps and minimises by click in the task bar only what has
// these styles; WM_NCCALCSIZE then takes their frame away again.
void addFrameStyles(HWND handle, bool resizable)
{
    LONG_PTR style = GetWindowLongPtrW(handle, GWL_STYLE);
    style |= WS_CAPTION | WS_MINIMIZEBOX | WS_SYSMENU;
    if (resizable)
        style |= WS_THICKFRAME | WS_MAXIMIZEBOX;
    SetWindowLongPtrW(handle, GWL_STYLE, style);
    SetWindowPos(handle, nullptr, 0, 0, 0, 0,
                 SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

long hitTestFor(Qt::Edges edges)
{
    if (edges == (Qt::TopEdge | Qt::LeftEdge))
        return HTTOPLEFT;
    if (edges == (Qt::TopEdge | Qt::RightEdge))
        return HTTOPRIGHT;
    if (edges == (Qt::BottomEdge | Qt::LeftEdge))
        return HTBOTTOMLEFT;
    if (edges == (Qt::BottomEdge | Qt::RightEdge))
        return HTBOTTOMRIGHT;
    if (edges == Qt::LeftEdge)
        return HTLEFT;
    if (edges == Qt::RightEdge)
        return HTRIGHT;
    if (edges == Qt::TopEdge)
        return HTTOP;
    if (edges == Qt::BottomEdge)
        return HTBOTTOM;
    return HTCLIENT;
}

// What a maximised window may cover. A task bar that hides takes no room from
// the work area, but comes out only where a line at its edge is left to it.
RECT workAreaOf(HMONITOR monitor, POINT *monitorOrigin)
{
    constexpr DWORD getHidingBar = 0x0b; // ABM_GETAUTOHIDEBAREX, since Windows 8
    MONITORINFO info = {};
    info.cbSize = sizeof info;
    GetMonitorInfoW(monitor, &info);
    *monitorOrigin = {info.rcMonitor.left, info.rcMonitor.top};
    RECT area = info.rcWork;
    const auto hasHidingBar = [&info](UINT edge) {
        APPBARDATA bar = {};
        bar.cbSize = sizeof bar;
        bar.uEdge = edge;
        bar.rc = info.rcMonitor;
        return SHAppBarMessage(getHidingBar, &bar) != 0;
    };
    if (EqualRect(&area, &info.rcMonitor)) {
        area.left += hasHidingBar(ABE_LEFT);
        area.top += hasHidingBar(ABE_TOP);
        area.right -= hasHidingBar(ABE_RIGHT);
        area.bottom -= hasHidingBar(ABE_BOTTOM);
    }
    return area;
}

} // namespace

WindowsFrame::WindowsFrame(QWidget *window)
    : m_window(window)
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

WindowsFrame::~WindowsFrame()
{
    if (auto *application = QCoreApplication::instance())
        application->removeNativeEventFilter(this);
}

bool WindowsFrame::nativeEventFilter(const QByteArray &eventType, void *message, long *result)
{
    if (eventType != "windows_generic_MSG" || !m_window->internalWinId())
        return false;
    const auto *msg = static_cast<const MSG *>(message);
    const auto handle = reinterpret_cast<HWND>(m_window->internalWinId());
    if (msg->hwnd != handle)
        return false;

    switch (msg->message) {
    case WM_SHOWWINDOW:
        if (!m_styled) {
            m_styled = true;
            addFrameStyles(handle, m_resizable);
        }
        return false;
    case WM_NCCALCSIZE:
        // The client area is the whole window. A maximised window has the size
        // given for WM_GETMINMAXINFO and hangs over no edge.
        if (msg->wParam == FALSE)
            return false;
        *result = 0;
        return true;
    case WM_NCHITTEST: {
        if (!m_resizable || IsZoomed(handle))
            return false;
        RECT window;
        GetWindowRect(handle, &window);
        const POINTS screenPoint = MAKEPOINTS(msg->lParam);
        const QPoint point(screenPoint.x - window.left, screenPoint.y - window.top);
        const QSize size(window.right - window.left, window.bottom - window.top);
        const int width = qRound(FramelessHelper::edgeWidth * m_window->devicePixelRatioF());
        *result = hitTestFor(FrameGeometry::edgesAt(point, size, width));
        return *result != HTCLIENT;
    }
    case WM_WINDOWPOSCHANGING: {
        // Of a monitor that is larger than the primary one, Windows makes the
        // size given for WM_GETMINMAXINFO larger still by the difference.
        auto *place = reinterpret_cast<WINDOWPOS *>(msg->lParam);
        if (!IsZoomed(handle) || IsIconic(handle) || (place->flags & (SWP_NOSIZE | SWP_NOMOVE)))
            return false;
        const RECT wanted = {place->x, place->y, place->x + place->cx, place->y + place->cy};
        POINT origin = {};
        const RECT area = workAreaOf(MonitorFromRect(&wanted, MONITOR_DEFAULTTONEAREST), &origin);
        const int width = area.right - area.left;
        const int height = area.bottom - area.top;
        if (place->cx > width || place->cy > height) {
            place->x = area.left;
            place->y = area.top;
            place->cx = width;
            place->cy = height;
        }
        return false;
    }
    case WM_GETMINMAXINFO: {
        POINT origin = {};
        const RECT area = workAreaOf(MonitorFromWindow(handle, MONITOR_DEFAULTTONEAREST), &origin);
        auto *info = reinterpret_cast<MINMAXINFO *>(msg->lParam);
        info->ptMaxPosition.x = area.left - origin.x;
        info->ptMaxPosition.y = area.top - origin.y;
        info->ptMaxSize.x = area.right - area.left;
        info->ptMaxSize.y = area.bottom - area.top;
        const QSizeF smallest = QSizeF(m_window->minimumSize()) * m_window->devicePixelRatioF();
        info->ptMinTrackSize.x = qRound(smallest.width());
        info->ptMinTrackSize.y = qRound(smallest.height());
        *result = 0;
        return true;
    }
    default:
        return false;
    }
}

#else

WindowsFrame::WindowsFrame(QWidget *window)
    : m_window(window)
{
}

WindowsFrame::~WindowsFrame() = default;

bool WindowsFrame::nativeEventFilter(const QByteArray &, void *, long *)
{
    Q_UNUSED(m_window);
    Q_UNUSED(m_styled);
    return false;
}

#endif
