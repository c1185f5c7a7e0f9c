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

struct Placement {
    RECT rectangle;  // pixels
    UINT dpi;
};

Placement PlacementOn(const RECT& workArea) {
    const POINT corner = PlacePopup(workArea);
    return {{corner.x, corner.y, corner.x + ScaleByDpi(kCanvasWidth), corner.y + ScaleByDpi(kCanvasHeight)},
            g_app.dpi};
}

// WM_DPICHANGED resizes and may move a window that comes from a monitor of another DPI. A larger window may
// lie mostly on yet another monitor at first, and take over that one's DPI. The first correction brings it
// onto its monitor and may cause a WM_DPICHANGED of its own; after the second no change of DPI is left.
void FitToPlace(const Placement& place) {
    constexpr int kMaxCorrections = 2;
    for (int correction = 0; correction < kMaxCorrections; ++correction) {
        RECT window = {};
        if (!GetWindowRect(g_app.mainWindow, &window) || EqualRect(&window, &place.rectangle)) break;
        SetWindowPos(g_app.mainWindow, nullptr, place.rectangle.left, place.rectangle.top,
                     place.rectangle.right - place.rectangle.left,
                     place.rectangle.bottom - place.rectangle.top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    AdoptDpi(place.dpi);
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
    const Placement place = PlacementOn(workArea);
    // The size follows the DPI of the monitor that the window arrives on, through WM_DPICHANGED.
    SetWindowPos(g_app.mainWindow, HWND_TOPMOST, place.rectangle.left, place.rectangle.top, 0, 0,
                 SWP_NOSIZE | SWP_SHOWWINDOW);
    FitToPlace(place);
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
}
