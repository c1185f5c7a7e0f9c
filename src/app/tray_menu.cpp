#include "app/tray_menu.h"

#include "app/pending_input.h"
#include "app/session_end.h"
#include "app/state/app_state.h"
#include "app/window_lifetime.h"
#include "filter/filter.h"
#include "store/autostart.h"
#include "store/settings.h"
#include "ui/popup_input.h"
#include "win32/platform.h"

namespace {

enum MenuCommand : UINT { kMenuNone = 0, kMenuLaunchAtStartup = 1, kMenuQuit = 2, kMenuLegacyMode = 3 };

void AppendCheckItem(HMENU menu, MenuCommand command, const wchar_t* text, bool on) {
    AppendMenuW(menu, MF_STRING | (on ? MF_CHECKED : MF_UNCHECKED), command, text);
}

MenuCommand TrackMenu(HMENU menu, POINT at) {
    // The menu of a program that is not in the foreground does not close when the user clicks elsewhere. The
    // empty message lets a second click on the icon open the menu again.
    SetForegroundWindow(g_app.mainWindow);
    g_app.menuTracking = true;
    const BOOL chosen =
        TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, 0, g_app.mainWindow, nullptr);
    g_app.menuTracking = false;
    PostMessageW(g_app.mainWindow, WM_NULL, 0, 0);
    return static_cast<MenuCommand>(chosen);
}

void PerformMenuCommand(MenuCommand command) {
    if (command != kMenuNone) ContinueSession();
    switch (command) {
        case kMenuQuit: DestroyMainWindow(); return;
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

}  // namespace

void ShowTrayMenu() {
    // The menu dispatches messages, including further clicks on the icon.
    if (g_app.menuTracking) return;
    POINT cursor = {};
    GetCursorPos(&cursor);
    // A queued button release for the popup would otherwise reach the menu and choose an item.
    const std::uint32_t request = ++g_app.menuRequestCount;
    HandlePendingPopupInput();
    // The handled input may have opened a box, whose loop dispatches messages. In the meantime the user may
    // have quit the program, or a later click may have opened its own menu.
    if (g_app.mainWindow == nullptr || g_app.menuRequestCount != request) return;
    EndDragIfReleased();
    // The release that ends the drag would choose an item.
    if (g_app.dragSlider != Slider::None) return;
    HMENU menu = CreatePopupMenu();
    if (menu == nullptr) return;
    AppendCheckItem(menu, kMenuLaunchAtStartup, L"Launch at Startup", g_app.launchAtStart);
    AppendCheckItem(menu, kMenuLegacyMode, L"Legacy Mode (Older Hardware)", g_app.useLegacyGamma);
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, kMenuQuit, L"Quit");
    PerformMenuCommand(TrackMenu(menu, cursor));
    DestroyMenu(menu);
}
