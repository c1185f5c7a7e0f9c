// Why a click cannot do with less: the popup shows the displays as they are when it opens, it appears on the
// monitor of the pointer with that monitor's scaling, and it hides when another window is in the foreground,
// which Windows does not announce to a window that never had it. Windows may refuse the foreground: the popup
// is then raised nevertheless, and whether it was refused decides when the popup hides. Screen readers learn
// of a popup only from its event. The refresh of the popup and of the icon's
// tip after a poll is part of the floor although nothing has changed: an earlier one may have failed, since
// the call fails while the taskbar does not answer. A hidden window is not painted.
#include "floor_popup.h"

#include "floor_panel.h"
#include "floor_polls.h"

#include <shellscalingapi.h>

namespace {

constexpr UINT_PTR kHideTimer = 6;
constexpr UINT kHidePeriod = 150;  // ms
constexpr int kWidth = 320;
constexpr int kHeight = 540;
constexpr int kMargin = 10;

bool g_displayAnswered;

UINT DpiOf(HMONITOR monitor) {
    static const auto getDpi = reinterpret_cast<decltype(&GetDpiForMonitor)>(GetProcAddress(
        LoadLibraryExW(L"Shcore.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32), "GetDpiForMonitor"));
    UINT x = 0, y = 0;
    getDpi(monitor, MDT_EFFECTIVE_DPI, &x, &y);
    return x;
}

void Show(HWND window) {
    g_displayAnswered = FloorPoll() > 0;
    POINT pointer = {};
    GetCursorPos(&pointer);
    MONITORINFO info = {};
    info.cbSize = sizeof(info);
    HMONITOR monitor = MonitorFromPoint(pointer, MONITOR_DEFAULTTONEAREST);
    GetMonitorInfoW(monitor, &info);
    const int dpi = static_cast<int>(DpiOf(monitor));
    const int width = MulDiv(kWidth, dpi, 96), height = MulDiv(kHeight, dpi, 96);
    const int margin = MulDiv(kMargin, dpi, 96);
    SetWindowPos(window, HWND_TOPMOST, info.rcWork.right - width - margin,
                 info.rcWork.bottom - height - margin, width, height, SWP_SHOWWINDOW);
    NotifyWinEvent(EVENT_OBJECT_SHOW, window, OBJID_CLIENT, CHILDID_SELF);
    BringWindowToTop(window);
    SetForegroundWindow(window);
    GetForegroundWindow();
    SetTimer(window, kHideTimer, kHidePeriod, nullptr);
}

void Poll(HWND window) {
    FloorPoll();
    InvalidateRect(window, nullptr, FALSE);
    Shell_NotifyIconW(NIM_MODIFY, &g_floorIcon);
}

void OnTimer(HWND window, WPARAM timer) {
    if (timer == kFloorPollTimer) Poll(window);
    if (timer == kHideTimer && GetForegroundWindow() == nullptr) ShowWindow(window, SW_HIDE);
}

}  // namespace

LRESULT CALLBACK FloorWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_USER + 1:
            if (lParam == WM_LBUTTONUP) Show(window);
            return 0;
        case WM_CLOSE:
            KillTimer(window, kHideTimer);
            ShowWindow(window, SW_HIDE);
            return 0;
        case WM_TIMER: OnTimer(window, wParam); return 0;
        case WM_PAINT: FloorPaint(window, g_displayAnswered); return 0;
        case WM_ERASEBKGND: return 1;
        default: return DefWindowProcW(window, message, wParam, lParam);
    }
}
