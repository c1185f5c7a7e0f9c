#include "app/popup.h"

#include <algorithm>

#include "app/shell/foreground.h"
#include "app/shell/scaled_resources.h"
#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "app/state/timers.h"
#include "brightness/pwm_safe.h"
#include "ui/canvas.h"

namespace {

constexpr int kMarginUnits = 10;

RECT WorkAreaOf(HMONITOR monitor) {
    MONITORINFO info = {};
    info.cbSize = sizeof(info);
    if (monitor != nullptr && GetMonitorInfoW(monitor, &info)) return info.rcWork;
    RECT primary = {};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &primary, 0);
    return primary;
}

// A window that comes from a monitor of another DPI is resized through WM_DPICHANGED, if it lands mostly on
// the new monitor. Coming from a larger DPI it may not; then it gets the size here that it was placed for.
void FitToPlace(POINT corner) {
    RECT window = {};
    if (!GetWindowRect(g_app.mainWindow, &window)) return;
    const int width = ScaleByDpi(kCanvasWidth);
    const int height = ScaleByDpi(kCanvasHeight);
    if (window.right - window.left == width && window.bottom - window.top == height) return;
    SetWindowPos(g_app.mainWindow, nullptr, corner.x, corner.y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

POINT PlacePopup(const RECT& workArea) {
    const int margin = ScaleByDpi(kMarginUnits);
    const int x = workArea.right - ScaleByDpi(kCanvasWidth) - margin;
    const int y = workArea.bottom - ScaleByDpi(kCanvasHeight) - margin;
    return {std::max<LONG>(x, workArea.left + margin), std::max<LONG>(y, workArea.top + margin)};
}

void ShowPopup() {
    const std::uint32_t shows = g_app.popupShows;
    RefreshPwmSafeTargets(false);
    // The displays may take long to answer: the program may have been quit meanwhile, or another click have
    // shown the popup, and a third hidden it.
    if (g_app.ending) return;
    if (g_app.popupShows != shows) {
        InvalidateRect(g_app.mainWindow, nullptr, FALSE);
        return;
    }
    g_app.popupShows += 1;
    POINT cursor = {};
    GetCursorPos(&cursor);
    HMONITOR monitor = MonitorFromPoint(cursor, MONITOR_DEFAULTTONEAREST);
    const RECT workArea = WorkAreaOf(monitor);

    UpdateDpiForMonitor(g_app.mainWindow, monitor);
    const POINT corner = PlacePopup(workArea);
    // The size follows the DPI of the monitor that the window arrives on, through WM_DPICHANGED.
    SetWindowPos(g_app.mainWindow, HWND_TOPMOST, corner.x, corner.y, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    FitToPlace(corner);
    g_app.popupShown = true;
    g_app.popupArmed = BringToForeground(g_app.mainWindow);
    InvalidateRect(g_app.mainWindow, nullptr, FALSE);
    StartTimer(TimerId::PopupAutoHide);
}

void HidePopup() {
    StopTimer(TimerId::PopupAutoHide);
    g_app.popupShown = false;
    g_app.popupArmed = false;
    g_app.popupHiddenAt = GetTickCount64();
    ShowWindow(g_app.mainWindow, SW_HIDE);
}
