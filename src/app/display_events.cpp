#include "app/display_events.h"

#include "app/shell/popup_dpi.h"
#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "app/state/timers.h"
#include "brightness/pwm_safe.h"
#include "filter/filter.h"
#include "filter/magnification.h"
#include "ui/canvas.h"
#include "win32/try_copy_memory.h"

namespace {

// Windows scales to 500%. The icon that is loaded for a DPI grows with its square.
constexpr UINT kMaxDpi = 960;

}  // namespace

void OnDisplayChange() {
    RestartTimer(TimerId::DisplaySettle);
}

void OnDpiChanged(UINT dpi, const RECT* suggested) {
    if (dpi > kMaxDpi) return;
    SetDpi(dpi);
    RECT rectangle = {};
    if (TryCopyMemory(suggested, &rectangle, sizeof(rectangle))) {
        SetWindowPos(g_app.mainWindow, nullptr, rectangle.left, rectangle.top, ScaleByDpi(kCanvasWidth),
                     ScaleByDpi(kCanvasHeight), SWP_NOZORDER | SWP_NOACTIVATE);
    }
    InvalidateRect(g_app.mainWindow, nullptr, FALSE);
}

void OnDisplaysSettled() {
    g_app.displaysWithoutRamps = 0;
    if (g_app.filterOn) {
        if (!g_app.useLegacyGamma && !g_app.magnificationReady) InitMagnification();
        ApplyFilter();
    }
    ReassertPwmSafeAfterChange();
    RefreshPopupAndTray();
}
