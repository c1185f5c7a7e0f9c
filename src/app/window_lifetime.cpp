#include "app/window_lifetime.h"

#include "app/power_events.h"
#include "app/shell/refresh.h"
#include "app/shell/tray_icon.h"
#include "app/single_instance.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/timers.h"
#include "brightness/pwm_safe.h"
#include "filter/cursor_tint.h"
#include "filter/legacy_gamma.h"
#include "filter/magnification.h"
#include "ui/fonts.h"
#include "ui/logo.h"

namespace {

// Windows keeps messages of programs with fewer rights from a program that runs as administrator: the
// taskbar's announcement and the message of a second start among them.
void AllowMessagesFromFewerRights(HWND window) {
    if (g_app.taskbarCreatedMessage != 0)
        ChangeWindowMessageFilterEx(window, g_app.taskbarCreatedMessage, MSGFLT_ALLOW, nullptr);
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
    g_app.mainWindow = window;
    g_app.panel = Panel::Main;
    AllowMessagesFromFewerRights(window);
    RegisterPowerEvents(window);
    RestorePwmSafeFromSettings();
    RefreshPopupAndTray();
}

void OnDestroy() {
    // A handler that is still waiting in a message box below us may go on to apply the filter; from now on
    // that clears.
    g_app.ending = true;
    StopTimer(TimerId::PwmSafePoll);
    StopTimer(TimerId::PwmSafeVerify);
    StopTimer(TimerId::PopupAutoHide);
    ReleasePwmSafeLock();
    ReleaseCursorCopies();
    RestoreIdentityRamp();
    ShutdownMagnification();
    UnregisterPowerEvents();
    RemoveTrayIcon();
    FreeDrawingResources();
    ReleaseSingleInstance();
    g_app.mainWindow = nullptr;
    PostQuitMessage(0);
}

void OnEndSession(bool ending, LPARAM reason) {
    if (!ending) return;
    // The process lives on for a moment, and nothing that happens in it may undo what is given back now: no
    // poll, no display change, no slider still held.
    g_app.ending = true;
    StopTimer(TimerId::DisplaySettle);
    StopTimer(TimerId::PwmSafePoll);
    StopTimer(TimerId::PwmSafeVerify);
    ReleasePwmSafeLockAtSessionEnd();
    ReleaseCursorCopies();
    RestoreIdentityRamp();
    // An installer that needs the program's file lets the session go on and waits for the program to end.
    if ((reason & ENDSESSION_CLOSEAPP) != 0) DestroyWindow(g_app.mainWindow);
}
