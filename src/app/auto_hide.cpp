#include "app/auto_hide.h"

#include "app/popup.h"
#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "ui/accessible_events.h"

namespace {

// The popup, its message boxes and its menu.
bool BelongsToPopup(HWND window) {
    return window == g_app.mainWindow || GetWindow(window, GW_OWNER) == g_app.mainWindow ||
           GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId();
}

}  // namespace

void OnActivate(WORD state, HWND other) {
    if (state != WA_INACTIVE || g_app.menuTracking) return;
    HWND gaining = other != nullptr ? other : GetForegroundWindow();
    if (gaining == nullptr || !BelongsToPopup(gaining)) HidePopup();
}

void OnAutoHideTimer() {
    if (!g_app.popupShown || !IsWindowVisible(g_app.mainWindow)) {
        StopTimer(TimerId::PopupAutoHide);
        g_app.popupShown = false;
        g_app.popupArmed = false;
        AnnouncePopup(false);
        return;
    }
    if (g_app.menuTracking) return;
    HWND foreground = GetForegroundWindow();
    if (foreground == nullptr) return;
    if (BelongsToPopup(foreground)) {
        g_app.popupArmed = true;
    } else if (g_app.popupArmed) {
        HidePopup();
    }
}
