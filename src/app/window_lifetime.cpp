#include "app/window_lifetime.h"

#include <utility>

#include "app/power_events.h"
#include "app/restore_screen.h"
#include "app/shell/refresh.h"
#include "app/shell/tray_icon.h"
#include "app/single_instance.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/timers.h"
#include "brightness/pwm_release.h"
#include "brightness/pwm_safe.h"
#include "filter/magnification.h"
#include "ui/accessible_events.h"
#include "ui/accessible_host.h"
#include "ui/fonts.h"
#include "ui/logo.h"

namespace {

// How long the destruction of the window may wait, in ms, for a running release of the backlight.
constexpr DWORD kWindowEndTimeout = 25000;

// If this program runs as administrator, Windows blocks messages from processes of lower integrity: the
// taskbar's broadcast, its clicks on the icon and the message of a second instance.
void AllowMessagesFromLowerIntegrity(HWND window) {
    if (g_app.taskbarCreatedMessage != 0)
        ChangeWindowMessageFilterEx(window, g_app.taskbarCreatedMessage, MSGFLT_ALLOW, nullptr);
    ChangeWindowMessageFilterEx(window, kMessageTray, MSGFLT_ALLOW, nullptr);
    ChangeWindowMessageFilterEx(window, kMessageShowPopup, MSGFLT_ALLOW, nullptr);
}

void FreeDrawingResources() {
    FreeLogo();
    DeleteObject(g_app.backgroundBrush);
    g_app.backgroundBrush = nullptr;
    DeleteFonts();
    if (g_app.headerIcon != nullptr) DestroyIcon(g_app.headerIcon);
    g_app.headerIcon = nullptr;
}

}  // namespace

void OnCreate(HWND window) {
    // Another program can send the message again.
    if (g_app.mainWindow != nullptr || g_app.windowDestroyed) return;
    g_app.mainWindow = window;
    g_app.panel = Panel::Main;
    AllowMessagesFromLowerIntegrity(window);
    RegisterPowerEvents(window);
    RestorePwmSafeFromSettings();
    RefreshPopupAndTray();
}

void OnDestroy() {
    if (g_app.windowDestroyed) return;
    // A handler further up the call stack may be waiting in a message box and apply the filter when the box
    // closes. From now on ApplyFilter clears instead.
    const bool sessionEnded = std::exchange(g_app.ending, true);
    g_app.windowDestroyed = true;
    SuspendPwmSafe();
    StopTimer(TimerId::PopupAutoHide);
    // Values that a cancelled session end could not restore are tried again.
    if (!sessionEnded) FinishPwmSafeRelease();
    ReleasePwmSafeLock();
    // OnEndSession has already waited for the release that it started.
    RestoreScreen(sessionEnded ? 0 : kWindowEndTimeout);
    ShutdownMagnification();
    UnregisterPowerEvents();
    RemoveTrayIcon();
    AnnouncePopup(false);
    ReleaseAccessibleObject();
    FreeDrawingResources();
    ReleaseSingleInstance();
    g_app.mainWindow = nullptr;
    PostQuitMessage(0);
}

void DestroyMainWindow() {
    if (DestroyWindow(g_app.mainWindow) == FALSE) OnDestroy();
}
