#include "progresswindow.h"

#ifndef UNICODE
#define UNICODE
#endif
#include <windows.h>

#include <commctrl.h>
#include <filesystem>

namespace {

constexpr UINT kEnd = WM_APP;
constexpr int kWidth = 400; // at 96 dots per inch
constexpr int kHeight = 90;
constexpr int kMargin = 16;

struct Window
{
    std::wstring text;
    HANDLE thread = nullptr;
    HANDLE ready = nullptr;
    HWND window = nullptr;
    HWND label = nullptr;
};

std::wstring wide(const std::string &text)
{
    return std::filesystem::u8path(text).wstring();
}

LRESULT CALLBACK handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CLOSE: // stays until the work is done
        return 0;
    case kEnd:
        ::DestroyWindow(window);
        return 0;
    case WM_DESTROY:
        ::PostQuitMessage(0);
        return 0;
    default:
        return ::DefWindowProcW(window, message, wParam, lParam);
    }
}

int screenDots()
{
    HDC screen = ::GetDC(nullptr);
    const int dots = ::GetDeviceCaps(screen, LOGPIXELSX);
    ::ReleaseDC(nullptr, screen);
    return dots;
}

HFONT messageFont()
{
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    ::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0);
    return ::CreateFontIndirectW(&metrics.lfMessageFont);
}

// Label above bar, in the middle of the first screen.
void build(Window &state)
{
    const int dots = screenDots();
    const auto scaled = [dots](int length) { return ::MulDiv(length, dots, 96); };
    HINSTANCE program = ::GetModuleHandleW(nullptr);
    WNDCLASSW kind{};
    kind.lpfnWndProc = handle;
    kind.hInstance = program;
    kind.hCursor = ::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_WAIT));
    kind.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<std::intptr_t>(COLOR_BTNFACE + 1));
    kind.lpszClassName = L"KorvexUnpacker";
    ::RegisterClassW(&kind);

    RECT frame{0, 0, scaled(kWidth), scaled(kHeight)};
    ::AdjustWindowRectEx(&frame, WS_POPUP | WS_CAPTION, FALSE, WS_EX_DLGMODALFRAME);
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    state.window = ::CreateWindowExW(WS_EX_DLGMODALFRAME, kind.lpszClassName, L"升级", WS_POPUP | WS_CAPTION,
                                     (::GetSystemMetrics(SM_CXSCREEN) - width) / 2,
                                     (::GetSystemMetrics(SM_CYSCREEN) - height) / 2, width, height, nullptr,
                                     nullptr, program, nullptr);
    if (!state.window)
        return;
    const int inside = scaled(kWidth - 2 * kMargin);
    state.label = ::CreateWindowExW(0, L"STATIC", state.text.c_str(), WS_CHILD | WS_VISIBLE | SS_NOPREFIX,
                                    scaled(kMargin), scaled(kMargin), inside, scaled(24), state.window,
                                    nullptr, program, nullptr);
    ::SendMessageW(state.label, WM_SETFONT, reinterpret_cast<WPARAM>(messageFont()), TRUE);
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_PROGRESS_CLASS};
    ::InitCommonControlsEx(&controls);
    HWND bar =
        ::CreateWindowExW(0, PROGRESS_CLASSW, nullptr, WS_CHILD | WS_VISIBLE | PBS_MARQUEE, scaled(kMargin),
                          scaled(52), inside, scaled(16), state.window, nullptr, program, nullptr);
    ::SendMessageW(bar, PBM_SETMARQUEE, TRUE, 0);
    ::ShowWindow(state.window, SW_SHOWNORMAL);
}

DWORD WINAPI run(LPVOID argument)
{
    auto &state = *static_cast<Window *>(argument);
    build(state);
    const bool shown = state.window != nullptr;
    ::SetEvent(state.ready);
    MSG message;
    while (shown && ::GetMessageW(&message, nullptr, 0, 0) > 0) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
    return 0;
}

} // namespace

ProgressWindow::ProgressWindow(const std::string &text)
{
    auto *state = new Window;
    state->text = wide(text);
    state->ready = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    state->thread = ::CreateThread(nullptr, 0, run, state, 0, nullptr);
    if (state->thread)
        ::WaitForSingleObject(state->ready, INFINITE);
    m_handle = reinterpret_cast<std::intptr_t>(state);
}

void ProgressWindow::setText(const std::string &text)
{
    const auto *state = reinterpret_cast<const Window *>(m_handle);
    if (state->label)
        ::SetWindowTextW(state->label, wide(text).c_str());
}

ProgressWindow::~ProgressWindow()
{
    auto *state = reinterpret_cast<Window *>(m_handle);
    if (state->window)
        ::PostMessageW(state->window, kEnd, 0, 0);
    if (state->thread) {
        ::WaitForSingleObject(state->thread, INFINITE);
        ::CloseHandle(state->thread);
    }
    ::CloseHandle(state->ready);
    delete state;
}
