#include "windowsframe.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QOperatingSystemVersion>
#include <QWidget>

#ifdef Q_OS_WIN

#include "framegeometry.h"
#include "framelesshelper.h"

#include <QWindow>
#include <qt_windows.h>

#include <shellapi.h>
#include <windowsx.h>

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

// Windows draws a shadow around what has a frame, be it one pixel below our own
// picture.
void addShadow(HWND handle)
{
    struct Margins
    {
        int left, right, top, bottom;
    };
    using Extend = HRESULT(WINAPI *)(HWND, const Margins *);
    static const auto extend = reinterpret_cast<Extend>(reinterpret_cast<void (*)()>(
        GetProcAddress(LoadLibraryW(L"dwmapi.dll"), "DwmExtendFrameIntoClientArea")));
    const Margins onePixel = {0, 0, 0, 1};
    if (extend)
        extend(handle, &onePixel);
}

// The choices of places at the button came with Windows 11; before, the system
// would only show a tool tip of its own there.
bool hasSnapLayouts()
{
    static const bool has = QOperatingSystemVersion::current() >=
                            QOperatingSystemVersion(QOperatingSystemVersion::Windows, 10, 0, 22000);
    return has;
}

// The menu that a right click on a title opens; what is chosen is the system's
// to do.
void showSystemMenu(HWND handle, const POINT &place, bool resizable)
{
    HMENU menu = GetSystemMenu(handle, FALSE);
    if (!menu)
        return;
    const bool zoomed = IsZoomed(handle);
    const auto allow = [menu](UINT command, bool allowed) {
        EnableMenuItem(menu, command, MF_BYCOMMAND | (allowed ? MF_ENABLED : MF_GRAYED));
    };
    allow(SC_RESTORE, zoomed);
    allow(SC_MOVE, !zoomed);
    allow(SC_SIZE, !zoomed && resizable);
    allow(SC_MAXIMIZE, !zoomed && resizable);
    const int command =
        TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, place.x, place.y, 0, handle, nullptr);
    if (command != 0)
        PostMessageW(handle, WM_SYSCOMMAND, static_cast<WPARAM>(command), 0);
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
            addShadow(handle);
        }
        return false;
    case WM_NCCALCSIZE:
        // The client area is the whole window. A maximised window has the size
        // given for WM_GETMINMAXINFO and hangs over no edge.
        if (msg->wParam == FALSE)
            return false;
        *result = 0;
        return true;
    case WM_NCACTIVATE:
        // -1: without drawing the frame, which would flash up over the title.
        *result = static_cast<long>(DefWindowProcW(handle, WM_NCACTIVATE, msg->wParam, -1));
        return true;
    case WM_NCHITTEST:
        return hitTest(msg, result);
    case WM_MOUSEMOVE: // it is on what is ours again
    case WM_NCMOUSEMOVE:
    case WM_NCMOUSELEAVE:
    case WM_NCLBUTTONDOWN:
    case WM_NCLBUTTONUP:
    case WM_NCLBUTTONDBLCLK:
        return workMaximizeButton(msg, result);
    case WM_RBUTTONUP: {
        POINT place = {GET_X_LPARAM(msg->lParam), GET_Y_LPARAM(msg->lParam)};
        if (!isTitle(QPoint(place.x, place.y)))
            return false;
        ClientToScreen(handle, &place);
        showSystemMenu(handle, place, m_resizable);
        return false;
    }
    case WM_DPICHANGED:
        m_changingDpi = true;
        return false;
    case WM_WINDOWPOSCHANGED:
        m_changingDpi = false;
        return false;
    case WM_WINDOWPOSCHANGING:
        keepInWorkArea(handle, reinterpret_cast<WINDOWPOS *>(msg->lParam));
        return false;
    case WM_GETMINMAXINFO:
        limitSize(handle, reinterpret_cast<MINMAXINFO *>(msg->lParam));
        *result = 0;
        return true;
    default:
        return false;
    }
}

// Edges, and the button at which Windows 11 offers places.
bool WindowsFrame::hitTest(const void *message, long *result) const
{
    const auto *msg = static_cast<const MSG *>(message);
    RECT window;
    GetWindowRect(msg->hwnd, &window);
    const POINTS screenPoint = MAKEPOINTS(msg->lParam);
    const QPoint point(screenPoint.x - window.left, screenPoint.y - window.top);
    *result = HTCLIENT;
    if (m_resizable && !IsZoomed(msg->hwnd)) {
        const QSize size(window.right - window.left, window.bottom - window.top);
        const int width = qRound(FramelessHelper::edgeWidth * m_window->devicePixelRatioF());
        *result = hitTestFor(FrameGeometry::edgesAt(point, size, width));
    }
    if (*result == HTCLIENT && m_resizable && hasSnapLayouts() && maximizeButton() &&
        childAt(point) == maximizeButton())
        *result = HTMAXBUTTON;
    return *result != HTCLIENT;
}

// Where Windows sees a button of its own, Qt gets no mouse events.
bool WindowsFrame::workMaximizeButton(const void *message, long *result)
{
    const auto *msg = static_cast<const MSG *>(message);
    QAbstractButton *button = maximizeButton();
    if (!button || !hasSnapLayouts())
        return false;
    const bool above =
        msg->message != WM_NCMOUSELEAVE && msg->message != WM_MOUSEMOVE && msg->wParam == HTMAXBUTTON;
    if (button->testAttribute(Qt::WA_UnderMouse) != above) {
        button->setAttribute(Qt::WA_UnderMouse, above);
        button->update();
        TRACKMOUSEEVENT leaving = {sizeof leaving, TME_LEAVE | TME_NONCLIENT, msg->hwnd, 0};
        if (above)
            TrackMouseEvent(&leaving);
    }
    if (!above || msg->message == WM_NCMOUSEMOVE) {
        button->setDown(button->isDown() && above);
        return false;
    }
    const bool clicked = msg->message == WM_NCLBUTTONUP && button->isDown();
    button->setDown(msg->message != WM_NCLBUTTONUP);
    if (clicked)
        button->click();
    *result = 0;
    return true;
}

void WindowsFrame::keepInWorkArea(void *handle, void *position) const
{
    // Of a monitor that is larger than the primary one, Windows makes the
    // size given for WM_GETMINMAXINFO larger still by the difference.
    const auto window = static_cast<HWND>(handle);
    auto *place = static_cast<WINDOWPOS *>(position);
    if (!IsZoomed(window) || IsIconic(window) || (place->flags & (SWP_NOSIZE | SWP_NOMOVE)))
        return;
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
}

void WindowsFrame::limitSize(void *handle, void *limits) const
{
    POINT origin = {};
    const RECT area =
        workAreaOf(MonitorFromWindow(static_cast<HWND>(handle), MONITOR_DEFAULTTONEAREST), &origin);
    auto *info = static_cast<MINMAXINFO *>(limits);
    info->ptMaxPosition.x = area.left - origin.x;
    info->ptMaxPosition.y = area.top - origin.y;
    info->ptMaxSize.x = area.right - area.left;
    info->ptMaxSize.y = area.bottom - area.top;
    // On its way to another scale the window gets the right size, but Qt still
    // has the old scale, by which the minimum may be larger than that.
    if (m_changingDpi)
        return;
    const QSizeF smallest = QSizeF(m_window->minimumSize()) * m_window->devicePixelRatioF();
    info->ptMinTrackSize.x = qRound(smallest.width());
    info->ptMinTrackSize.y = qRound(smallest.height());
}

// By a point in the pixels of the device.
QWidget *WindowsFrame::childAt(const QPoint &point) const
{
    return m_window->childAt((QPointF(point) / m_window->devicePixelRatioF()).toPoint());
}

// The strip at the top, but for its buttons.
bool WindowsFrame::isTitle(const QPoint &point) const
{
    const QWidget *child = childAt(point);
    while (child && child->objectName() != QLatin1String("titleBar")) {
        if (qobject_cast<const QAbstractButton *>(child))
            return false;
        child = child->parentWidget();
    }
    return child != nullptr;
}

QAbstractButton *WindowsFrame::maximizeButton() const
{
    return m_window->findChild<QAbstractButton *>(QStringLiteral("btnMaximize"));
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
    Q_UNUSED(m_changingDpi);
    return false;
}

#endif
