// Why a click cannot do with less: the popup shows the displays as they are when it opens, it appears on the
// monitor of the pointer with that monitor's scaling, and it hides when another window is in the foreground,
// which Windows does not announce to a window that never had it. The refresh of the popup and of the icon's
// tip after a poll is part of the floor although nothing has changed: an earlier one may have failed, since
// the call fails while the taskbar does not answer. A hidden window is not painted.
#include "floor_popup.h"

#include "floor_polls.h"

namespace {

constexpr UINT_PTR kHideTimer = 6;
constexpr UINT kHidePeriod = 150;  // ms
constexpr int kWidth = 320;
constexpr int kHeight = 540;
constexpr int kMargin = 10;

void Show(HWND window) {
    FloorPoll();
    POINT pointer = {};
    GetCursorPos(&pointer);
    MONITORINFO info = {};
    info.cbSize = sizeof(info);
    GetMonitorInfoW(MonitorFromPoint(pointer, MONITOR_DEFAULTTONEAREST), &info);
    SetWindowPos(window, HWND_TOPMOST, info.rcWork.right - kWidth - kMargin,
                 info.rcWork.bottom - kHeight - kMargin, kWidth, kHeight, SWP_SHOWWINDOW);
    SetForegroundWindow(window);
    SetTimer(window, kHideTimer, kHidePeriod, nullptr);
}

// One colour: the shapes of the panel are measured as painting.
void Paint(HWND window) {
    PAINTSTRUCT paint;
    HDC dc = BeginPaint(window, &paint);
    SetDCBrushColor(dc, RGB(13, 13, 13));
    FillRect(dc, &paint.rcPaint, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    EndPaint(window, &paint);
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
        case WM_PAINT: Paint(window); return 0;
        case WM_ERASEBKGND: return 1;
        default: return DefWindowProcW(window, message, wParam, lParam);
    }
}
