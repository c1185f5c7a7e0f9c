#include "app/window_lifetime.h"

#include "app/shell/refresh.h"
#include "app/shell/tray_icon.h"
#include "app/single_instance.h"
#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "brightness/pwm_safe.h"
#include "filter/cursor_tint.h"
#include "filter/legacy_gamma.h"
#include "filter/magnification.h"
#include "ui/fonts.h"
#include "ui/logo.h"

namespace {

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
