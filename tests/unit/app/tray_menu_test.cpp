#include "app/tray_menu.h"

#include <gtest/gtest.h>

#include <utility>

#include "app/pending_input.h"
#include "app/session_end.h"
#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/filter.h"
#include "store/autostart.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "ui/popup_input.h"

AMBREL_REPLACE(void, ToggleLegacyMode, ()) {
    Record("toggle legacy mode", g_app.menuTracking ? " while tracking" : "");
}
AMBREL_REPLACE(void, SetAutostart, (bool on)) {
    Record("set autostart ", on ? "on" : "off", g_app.menuTracking ? " while tracking" : "");
    g_app.launchAtStart = on;
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save settings");
}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}
AMBREL_REPLACE(void, ContinueSession, ()) {
    if (g_app.ending) Record("continue session");
    g_app.ending = false;
}

namespace {

void (*g_pendingInput)() = nullptr;
bool g_sliderHeld = false;

}  // namespace

AMBREL_REPLACE(void, HandlePendingPopupInput, ()) {
    if (const auto handle = std::exchange(g_pendingInput, nullptr)) handle();
}
AMBREL_REPLACE(void, EndDragIfReleased, ()) {
    if (!g_sliderHeld) g_app.dragSlider = Slider::None;
}

namespace {

BOOL g_choice = 0;
bool g_menuCreationSucceeds = true;
bool g_requestWhileMenuOpen = false;
bool g_switchedOnWhileMenuOpen = false;
bool g_sessionEndsWhileMenuOpen = false;

HWND const kWindow = MakeHandle<HWND>(500);
HMENU const kMenu = MakeHandle<HMENU>(60);

BOOL WINAPI FakeGetCursorPos(POINT* position) {
    *position = {-7, 1050};
    return TRUE;
}

HMENU WINAPI FakeCreatePopupMenu() {
    Record("create menu");
    return g_menuCreationSucceeds ? kMenu : nullptr;
}

BOOL WINAPI FakeAppendMenu(HMENU menu, UINT flags, UINT_PTR id, const wchar_t* text) {
    EXPECT_EQ(menu, kMenu);
    Record("append ", id, " flags ", flags, " ", text != nullptr ? Narrow(text) : "-");
    return TRUE;
}

BOOL WINAPI FakeSetForegroundWindow(HWND window) {
    Record("foreground ", ValueOf(window));
    return FALSE;
}

BOOL WINAPI FakeTrackPopupMenu(HMENU menu, UINT flags, int x, int y, int, HWND window, const RECT*) {
    Record("track ", ValueOf(menu), " flags ", flags, " at ", x, " ", y, " for ", ValueOf(window),
           g_app.menuTracking ? " tracking" : "");
    if (g_requestWhileMenuOpen) ShowTrayMenu();
    if (g_requestWhileMenuOpen && !g_app.menuTracking) Record("no longer tracking");
    if (g_switchedOnWhileMenuOpen) g_app.launchAtStart = true;
    if (g_sessionEndsWhileMenuOpen) g_app.ending = true;
    return g_choice;
}

BOOL WINAPI FakePostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Record("post ", ValueOf(window), " ", message, " ", wParam, " ", lParam,
           g_app.menuTracking ? " while tracking" : "");
    return TRUE;
}

BOOL WINAPI FakeDestroyWindow(HWND window) {
    Record("destroy window ", ValueOf(window));
    return TRUE;
}

BOOL WINAPI FakeDestroyMenu(HMENU menu) {
    Record("destroy menu ", ValueOf(menu));
    return TRUE;
}

BOOL WINAPI FakeInvalidateRect(HWND, const RECT*, BOOL) {
    Record("invalidate");
    return TRUE;
}

class TrayMenu : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_calls.clear();
        g_pendingInput = nullptr;
        g_sliderHeld = false;
        g_choice = 0;
        g_menuCreationSucceeds = true;
        g_requestWhileMenuOpen = false;
        g_switchedOnWhileMenuOpen = false;
        g_sessionEndsWhileMenuOpen = false;
    }

    // The recorded calls of showing the menu, without the items.
    static CallRecord CallsOfChoosing(BOOL command) {
        g_choice = command;
        ShowTrayMenu();
        std::erase_if(g_calls, [](const std::string& call) { return call.starts_with("append"); });
        return g_calls;
    }
};

}  // namespace

AMBREL_SEAM(GetCursorPos, FakeGetCursorPos);
AMBREL_SEAM(CreatePopupMenu, FakeCreatePopupMenu);
AMBREL_SEAM(AppendMenuW, FakeAppendMenu);
AMBREL_SEAM(SetForegroundWindow, FakeSetForegroundWindow);
AMBREL_SEAM(TrackPopupMenu, FakeTrackPopupMenu);
AMBREL_SEAM(PostMessageW, FakePostMessage);
AMBREL_SEAM(DestroyWindow, FakeDestroyWindow);
AMBREL_SEAM(DestroyMenu, FakeDestroyMenu);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);

TEST_F(TrayMenu, IsShownAtTheMouseAndClosesProperly) {
    ShowTrayMenu();
    EXPECT_EQ(g_calls, (CallRecord{
                           "create menu",
                           "append 1 flags 0 Launch at Startup",
                           "append 3 flags 0 Legacy Mode (Older Hardware)",
                           "append 0 flags 2048 -",
                           "append 2 flags 0 Quit",
                           "foreground 500",
                           "track 60 flags 258 at -7 1050 for 500 tracking",
                           "post 500 0 0 0",
                           "destroy menu 60",
                       }));
    EXPECT_FALSE(g_app.menuTracking);
}

TEST_F(TrayMenu, LaunchAtStartupIsCheckedWhenItIsOn) {
    g_app.launchAtStart = true;
    ShowTrayMenu();
    EXPECT_EQ(g_calls[1], "append 1 flags 8 Launch at Startup");
    EXPECT_EQ(g_calls[2], "append 3 flags 0 Legacy Mode (Older Hardware)");
}

TEST_F(TrayMenu, LegacyModeIsCheckedWhenItIsOn) {
    g_app.useLegacyGamma = true;
    ShowTrayMenu();
    EXPECT_EQ(g_calls[1], "append 1 flags 0 Launch at Startup");
    EXPECT_EQ(g_calls[2], "append 3 flags 8 Legacy Mode (Older Hardware)");
}

TEST_F(TrayMenu, NothingChosenChangesNothing) {
    const AppState before = g_app;
    EXPECT_EQ(CallsOfChoosing(0),
              (CallRecord{"create menu", "foreground 500", "track 60 flags 258 at -7 1050 for 500 tracking",
                          "post 500 0 0 0", "destroy menu 60"}));
    EXPECT_EQ(g_app.useLegacyGamma, before.useLegacyGamma);
    EXPECT_EQ(g_app.launchAtStart, before.launchAtStart);
}

TEST_F(TrayMenu, QuitDestroysTheWindowAndSavesNothing) {
    EXPECT_EQ(CallsOfChoosing(2),
              (CallRecord{"create menu", "foreground 500", "track 60 flags 258 at -7 1050 for 500 tracking",
                          "post 500 0 0 0", "destroy window 500", "destroy menu 60"}));
}

TEST_F(TrayMenu, LaunchAtStartupIsReversedAndSavedButNeitherPopupNorTooltipIsRefreshed) {
    EXPECT_EQ(CallsOfChoosing(1),
              (CallRecord{"create menu", "foreground 500", "track 60 flags 258 at -7 1050 for 500 tracking",
                          "post 500 0 0 0", "set autostart on", "save settings", "destroy menu 60"}));
    EXPECT_TRUE(g_app.launchAtStart);
    g_calls.clear();
    EXPECT_EQ(CallsOfChoosing(1),
              (CallRecord{"create menu", "foreground 500", "track 60 flags 258 at -7 1050 for 500 tracking",
                          "post 500 0 0 0", "set autostart off", "save settings", "destroy menu 60"}));
    EXPECT_FALSE(g_app.launchAtStart);
}

// The setting may change while the menu is open, for example in the popup behind it.
TEST_F(TrayMenu, TheSettingIsReversedFromItsValueAtTheTimeOfTheChoice) {
    g_switchedOnWhileMenuOpen = true;
    EXPECT_EQ(CallsOfChoosing(1).at(4), "set autostart off");
}

TEST_F(TrayMenu, LegacyModeIsToggledAndSavedButNeitherPopupNorTooltipIsRefreshed) {
    EXPECT_EQ(CallsOfChoosing(3),
              (CallRecord{"create menu", "foreground 500", "track 60 flags 258 at -7 1050 for 500 tracking",
                          "post 500 0 0 0", "toggle legacy mode", "save settings", "destroy menu 60"}));
}

TEST_F(TrayMenu, ASecondRequestWhileTheMenuIsOpenOpensNoOther) {
    g_requestWhileMenuOpen = true;
    EXPECT_EQ(CallsOfChoosing(0),
              (CallRecord{"create menu", "foreground 500", "track 60 flags 258 at -7 1050 for 500 tracking",
                          "post 500 0 0 0", "destroy menu 60"}));
    EXPECT_FALSE(g_app.menuTracking);
}

TEST_F(TrayMenu, WithoutAMenuNothingHappens) {
    g_menuCreationSucceeds = false;
    ShowTrayMenu();
    EXPECT_EQ(g_calls, (CallRecord{"create menu"}));
    EXPECT_FALSE(g_app.menuTracking);
}

// The menu would treat a late release as a choice. The check marks show that the input was handled first.
TEST_F(TrayMenu, QueuedPopupInputIsHandledBeforeTheMenuIsCreated) {
    g_pendingInput = [] {
        Record("pending input", g_app.menuTracking ? " while tracking" : "");
        g_app.useLegacyGamma = true;
    };
    ShowTrayMenu();
    EXPECT_EQ(g_calls[0], "pending input");
    EXPECT_EQ(g_calls[1], "create menu");
    EXPECT_EQ(g_calls[3], "append 3 flags 8 Legacy Mode (Older Hardware)");
}

TEST_F(TrayMenu, NoMenuOpensWhenTheHandledInputEndedTheProgram) {
    g_pendingInput = [] { g_app.mainWindow = nullptr; };
    ShowTrayMenu();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(TrayMenu, ARequestDuringTheHandledInputOpensTheOnlyMenu) {
    g_pendingInput = [] { ShowTrayMenu(); };
    EXPECT_EQ(CallsOfChoosing(0),
              (CallRecord{"create menu", "foreground 500", "track 60 flags 258 at -7 1050 for 500 tracking",
                          "post 500 0 0 0", "destroy menu 60"}));
}

TEST_F(TrayMenu, NoMenuOpensWhileASliderIsHeld) {
    g_app.dragSlider = Slider::Warmth;
    g_sliderHeld = true;
    ShowTrayMenu();
    EXPECT_TRUE(g_calls.empty());
    g_sliderHeld = false;
    ShowTrayMenu();
    EXPECT_EQ(g_calls[0], "create menu");
}

// The session ended while the menu was open.
TEST_F(TrayMenu, AChoiceContinuesASessionThatWasEndingAndDismissingTheMenuDoesNot) {
    for (const BOOL choice : {1, 2, 3, 0}) {
        g_calls.clear();
        g_sessionEndsWhileMenuOpen = true;
        CallsOfChoosing(choice);
        EXPECT_EQ(g_app.ending, choice == 0) << "command " << choice;
    }
}
