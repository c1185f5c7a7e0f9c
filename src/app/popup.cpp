#include "app/popup.h"

#include <algorithm>

#include "app/shell/foreground.h"
#include "app/shell/popup_dpi.h"
#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "app/state/timers.h"
#include "brightness/pwm_safe.h"
#include "ui/accessible_events.h"
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

struct Placement {
    RECT rectangle;  // pixels
    UINT dpi;
};

Placement PlacementOn(const RECT& workArea) {
    const POINT corner = PopupPosition(workArea);
    return {{corner.x, corner.y, corner.x + ScaleByDpi(kCanvasWidth), corner.y + ScaleByDpi(kCanvasHeight)},
            g_app.dpi};
}

// Another program can minimise the window, which would then be shown only as a title bar or not at all.
void RestoreIfMinimised() {
    if (IsIconic(g_app.mainWindow)) ShowWindow(g_app.mainWindow, SW_SHOWNOACTIVATE);
}

// WM_DPICHANGED resizes and may move a window that comes from a monitor of another DPI. A larger window may
// at first lie mostly on a third monitor and receive the DPI of that one. The first correction moves it onto
// its monitor and may cause another WM_DPICHANGED; after the second correction the DPI does not change any
// more.
void FitToPlacement(const Placement& placement) {
    constexpr int kMaxCorrections = 2;
    for (int correction = 0; correction < kMaxCorrections; ++correction) {
        RECT window = {};
        if (!GetWindowRect(g_app.mainWindow, &window) || EqualRect(&window, &placement.rectangle)) break;
        SetWindowPos(g_app.mainWindow, nullptr, placement.rectangle.left, placement.rectangle.top,
                     placement.rectangle.right - placement.rectangle.left,
                     placement.rectangle.bottom - placement.rectangle.top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    SetDpi(placement.dpi);
}

}  // namespace

POINT PopupPosition(const RECT& workArea) {
    const int margin = ScaleByDpi(kMarginUnits);
    const int x = workArea.right - ScaleByDpi(kCanvasWidth) - margin;
    const int y = workArea.bottom - ScaleByDpi(kCanvasHeight) - margin;
    return {std::max<LONG>(x, workArea.left + margin), std::max<LONG>(y, workArea.top + margin)};
}

void ShowPopup() {
    RefreshPwmSafeTargets(false);
    // The query dispatches messages. The session may be ending by now, and an installer's end of the program
    // destroys the window.
    if (g_app.ending) return;
    POINT cursor = {};
    GetCursorPos(&cursor);
    HMONITOR monitor = MonitorFromPoint(cursor, MONITOR_DEFAULTTONEAREST);
    const RECT workArea = WorkAreaOf(monitor);

    UpdateDpiForMonitor(g_app.mainWindow, monitor);
    const Placement placement = PlacementOn(workArea);
    RestoreIfMinimised();
    // WM_DPICHANGED sets the size for the monitor that the window moves to.
    SetWindowPos(g_app.mainWindow, HWND_TOPMOST, placement.rectangle.left, placement.rectangle.top, 0, 0,
                 SWP_NOSIZE | SWP_SHOWWINDOW);
    FitToPlacement(placement);
    AnnouncePopup(true);
    g_app.popupShown = true;
    g_app.popupArmed = BringToForeground(g_app.mainWindow);
    InvalidateRect(g_app.mainWindow, nullptr, FALSE);
    StartTimer(TimerId::PopupAutoHide);
}

void HidePopup() {
    StopTimer(TimerId::PopupAutoHide);
    g_app.popupShown = false;
    g_app.popupArmed = false;
    // A menu or a message box of a hidden popup hides it again when it ends: no click has done that.
    if (IsWindowVisible(g_app.mainWindow)) g_app.popupHiddenAt = GetTickCount64();
    ShowWindow(g_app.mainWindow, SW_HIDE);
    AnnouncePopup(false);
}
