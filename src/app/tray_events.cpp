#include "app/tray_events.h"

#include "app/popup.h"
#include "app/sent_message.h"
#include "app/session_end.h"
#include "app/shell/ensure_tray_icon.h"
#include "app/shell/tray_icon.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/timers.h"
#include "app/tray_menu.h"
#include "store/event_log.h"

namespace {

constexpr int kMaxTrayRetries = 20;

// A click on the icon deactivates and hides the popup before the click itself arrives. That click must not
// show it again.
constexpr std::uint64_t kReopenDelay = 250;  // ms

bool WasJustHidden() {
    return !IsWindowVisible(g_app.mainWindow) && GetTickCount64() - g_app.popupHiddenAt < kReopenDelay;
}

void TogglePopup() {
    if (IsWindowVisible(g_app.mainWindow)) {
        HidePopup();
    } else if (!WasJustHidden()) {
        ShowPopup();
    }
}

}  // namespace

void OnTrayCallback(LPARAM mouseMessage) {
    if (mouseMessage != WM_LBUTTONUP && mouseMessage != WM_RBUTTONUP) return;
    ContinueSession();
    if (ShouldPostAgain()) {
        // The reopen delay counts from this arrival.
        if (mouseMessage == WM_LBUTTONUP && WasJustHidden()) return;
        PostMessageW(g_app.mainWindow, kMessageTray, 0, mouseMessage);
        return;
    }
    if (mouseMessage == WM_LBUTTONUP) {
        TogglePopup();
    } else {
        ShowTrayMenu();
    }
}

void OnTaskbarCreated() {
    LogEvent("TaskbarCreated received - (re)adding tray icon");
    RemoveTrayIcon();
    g_app.trayIconAdded = false;
    if (!EnsureTrayIcon()) return;
    UpdateTrayIcon();
    StopTimer(TimerId::TrayRetry);
}

void OnTrayRetryTimer() {
    if (g_app.trayIconAdded) {
        StopTimer(TimerId::TrayRetry);
        return;
    }
    g_app.trayRetryCount += 1;
    if (EnsureTrayIcon()) {
        LogEvent("Tray icon added after %d retr%ls", g_app.trayRetryCount,
                 g_app.trayRetryCount == 1 ? L"y" : L"ies");
        StopTimer(TimerId::TrayRetry);
        UpdateTrayIcon();
    } else if (g_app.trayRetryCount >= kMaxTrayRetries) {
        LogEvent("Tray icon add gave up after %d retries", g_app.trayRetryCount);
        StopTimer(TimerId::TrayRetry);
    }
}
