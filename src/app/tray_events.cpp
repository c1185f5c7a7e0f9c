#include "app/tray_events.h"

#include "app/pending_input.h"
#include "app/popup.h"
#include "app/shell/ensure_tray_icon.h"
#include "app/shell/tray_icon.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/timers.h"
#include "filter/filter.h"
#include "store/autostart.h"
#include "store/event_log.h"
#include "store/settings.h"

namespace {

constexpr int kMostTrayRetries = 20;

// A click on the icon takes the activation from the popup and hides it before the click itself arrives; that
// click must not open it again.
constexpr std::uint64_t kReopenGuard = 250;  // ms

enum MenuCommand : UINT { kMenuNone = 0, kMenuLaunchAtStartup = 1, kMenuQuit = 2, kMenuLegacyMode = 3 };

bool WasJustHidden() {
    return !IsWindowVisible(g_app.mainWindow) && GetTickCount64() - g_app.popupHiddenAt < kReopenGuard;
}

void TogglePopup() {
    if (IsWindowVisible(g_app.mainWindow)) {
        HidePopup();
    } else if (!WasJustHidden()) {
        ShowPopup();
    }
}

void AppendSwitch(HMENU menu, MenuCommand command, const wchar_t* text, bool on) {
    AppendMenuW(menu, MF_STRING | (on ? MF_CHECKED : MF_UNCHECKED), command, text);
}

MenuCommand AskMenu(HMENU menu, POINT at) {
    // A menu of a program that is not in the foreground does not close when the user clicks elsewhere; the
    // empty message lets a second click on the icon open it again.
    SetForegroundWindow(g_app.mainWindow);
    g_app.menuTracking = true;
    const BOOL chosen =
        TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, 0, g_app.mainWindow, nullptr);
    g_app.menuTracking = false;
    PostMessageW(g_app.mainWindow, WM_NULL, 0, 0);
    return static_cast<MenuCommand>(chosen);
}

void PerformMenuCommand(MenuCommand command) {
    switch (command) {
        case kMenuQuit: DestroyWindow(g_app.mainWindow); return;
        case kMenuLegacyMode:
            ToggleLegacyMode();
            SaveSettings();
            return;
        case kMenuLaunchAtStartup:
            SetAutostart(!g_app.launchAtStart);
            SaveSettings();
            return;
        case kMenuNone: return;
    }
}

void ShowTrayMenu() {
    // The menu dispatches messages, another click on the icon among them.
    if (g_app.menuTracking) return;
    POINT cursor = {};
    GetCursorPos(&cursor);
    // Otherwise the menu's loop takes a late release of a button in the popup for a choice.
    const std::uint32_t request = ++g_app.menuRequests;
    HandlePendingPopupInput();
    // The handled input may have opened a box, whose loop dispatches messages: the program may have been quit
    // meanwhile, or a later click have had its menu.
    if (g_app.mainWindow == nullptr || g_app.menuRequests != request) return;
    // The release that ends the drag would choose a row.
    if (IsSliderHeld()) return;
    HMENU menu = CreatePopupMenu();
    if (menu == nullptr) return;
    AppendSwitch(menu, kMenuLaunchAtStartup, L"Launch at Startup", g_app.launchAtStart);
    AppendSwitch(menu, kMenuLegacyMode, L"Legacy Mode (Older Hardware)", g_app.useLegacyGamma);
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, kMenuQuit, L"Quit");
    PerformMenuCommand(AskMenu(menu, cursor));
    DestroyMenu(menu);
}

}  // namespace

void OnTrayCallback(LPARAM mouseMessage) {
    if (mouseMessage != WM_LBUTTONUP && mouseMessage != WM_RBUTTONUP) return;
    // The shell may send it, and out of a message that another process sends COM does not call out, as it
    // must to ask built-in panels. Whether it is the click that hid the popup is told by when it arrives.
    if (InSendMessageEx(nullptr) != ISMEX_NOSEND) {
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
    } else if (g_app.trayRetryCount >= kMostTrayRetries) {
        LogEvent("Tray icon add gave up after %d retries", g_app.trayRetryCount);
        StopTimer(TimerId::TrayRetry);
    }
}
