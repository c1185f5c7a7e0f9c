#include "app/auto_hide.h"

#include <gtest/gtest.h>

#include "app/popup.h"
#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "ui/accessible_events.h"

AMBREL_USES_SEAMS(recorded_timers);

AMBREL_REPLACE(void, HidePopup, ()) {
    Record("hide popup");
}
AMBREL_REPLACE(void, AnnouncePopup, (bool shown)) {
    Record("announce ", shown ? "shown" : "hidden");
}

namespace {

HWND const kPopup = MakeHandle<HWND>(500);
HWND const kOwned = MakeHandle<HWND>(510);       // by the popup, of another thread
HWND const kSameThread = MakeHandle<HWND>(520);  // without an owner
HWND const kForeign = MakeHandle<HWND>(600);
HWND const kForeignOwned = MakeHandle<HWND>(610);  // by the foreign window

constexpr DWORD kForeignThread = 0xFFFF0001;

HWND g_foreground = nullptr;
bool g_visible = true;

HWND WINAPI FakeGetForegroundWindow() {
    return g_foreground;
}

HWND WINAPI FakeGetWindow(HWND window, UINT relation) {
    EXPECT_EQ(relation, static_cast<UINT>(GW_OWNER));
    if (window == kOwned) return kPopup;
    return window == kForeignOwned ? kForeign : nullptr;
}

DWORD WINAPI FakeGetWindowThreadProcessId(HWND window, DWORD*) {
    return window == kSameThread || window == kPopup ? GetCurrentThreadId() : kForeignThread;
}

BOOL WINAPI FakeIsWindowVisible(HWND window) {
    EXPECT_EQ(window, kPopup);
    return g_visible;
}

class AutoHide : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kPopup;
        g_app.popupShown = true;
        g_calls.clear();
        g_foreground = kForeign;
        g_visible = true;
    }

    void ExpectHidden() const { EXPECT_EQ(g_calls, (CallRecord{"hide popup"})); }
    void ExpectUntouched() const { EXPECT_TRUE(g_calls.empty()); }
};

}  // namespace

AMBREL_SEAM(GetForegroundWindow, FakeGetForegroundWindow);
AMBREL_SEAM(GetWindow, FakeGetWindow);
AMBREL_SEAM(GetWindowThreadProcessId, FakeGetWindowThreadProcessId);
AMBREL_SEAM(IsWindowVisible, FakeIsWindowVisible);

// Deactivations that Windows reports.

TEST_F(AutoHide, AnotherProgramsWindowHidesThePopup) {
    OnActivate(WA_INACTIVE, kForeign);
    ExpectHidden();
}

TEST_F(AutoHide, AWindowOwnedByAnotherProgramsWindowHidesThePopup) {
    OnActivate(WA_INACTIVE, kForeignOwned);
    ExpectHidden();
}

TEST_F(AutoHide, WithoutAGainingWindowTheForegroundWindowDecides) {
    OnActivate(WA_INACTIVE, nullptr);
    ExpectHidden();
}

TEST_F(AutoHide, AForegroundWindowOfThisProgramDoesNotHideThePopup) {
    g_foreground = kOwned;
    OnActivate(WA_INACTIVE, nullptr);
    g_foreground = kPopup;
    OnActivate(WA_INACTIVE, nullptr);
    ExpectUntouched();
}

TEST_F(AutoHide, WithoutAnyWindowToActivateThePopupIsHidden) {
    g_foreground = nullptr;
    OnActivate(WA_INACTIVE, nullptr);
    ExpectHidden();
}

TEST_F(AutoHide, TheGainingWindowTakesPrecedenceOverTheForegroundWindow) {
    g_foreground = kPopup;
    OnActivate(WA_INACTIVE, kForeign);
    ExpectHidden();
}

TEST_F(AutoHide, ThePopupItselfItsWindowsAndItsThreadsDoNotHideIt) {
    OnActivate(WA_INACTIVE, kPopup);
    OnActivate(WA_INACTIVE, kOwned);
    OnActivate(WA_INACTIVE, kSameThread);
    ExpectUntouched();
}

TEST_F(AutoHide, WhileTheTrayMenuIsOpenADeactivationIsIgnored) {
    g_app.menuTracking = true;
    OnActivate(WA_INACTIVE, kForeign);
    g_foreground = nullptr;
    OnActivate(WA_INACTIVE, nullptr);
    ExpectUntouched();
}

TEST_F(AutoHide, ADeactivationHidesThePopupArmedOrNot) {
    g_app.popupArmed = false;
    OnActivate(WA_INACTIVE, kForeign);
    ExpectHidden();
}

TEST_F(AutoHide, ActivationDoesNothing) {
    g_foreground = nullptr;
    OnActivate(WA_ACTIVE, kForeign);
    OnActivate(WA_CLICKACTIVE, kForeign);
    OnActivate(WA_ACTIVE, nullptr);
    ExpectUntouched();
    EXPECT_FALSE(g_app.popupArmed);
}

// The poll every 150 ms.

TEST_F(AutoHide, AnArmedPopupHidesWhenAnotherProgramIsInTheForeground) {
    g_app.popupArmed = true;
    OnAutoHideTimer();
    ExpectHidden();
}

TEST_F(AutoHide, APopupThatWasNeverActiveStays) {
    OnAutoHideTimer();
    ExpectUntouched();
    EXPECT_FALSE(g_app.popupArmed);
    EXPECT_TRUE(g_app.popupShown);
}

TEST_F(AutoHide, ThePopupInTheForegroundIsArmed) {
    g_foreground = kPopup;
    OnAutoHideTimer();
    EXPECT_TRUE(g_app.popupArmed);
    ExpectUntouched();
}

TEST_F(AutoHide, AWindowOwnedByThePopupArmsIt) {
    g_foreground = kOwned;
    OnAutoHideTimer();
    EXPECT_TRUE(g_app.popupArmed);
    ExpectUntouched();
}

TEST_F(AutoHide, AWindowOfThisThreadArmsThePopup) {
    g_foreground = kSameThread;
    OnAutoHideTimer();
    EXPECT_TRUE(g_app.popupArmed);
    ExpectUntouched();
}

TEST_F(AutoHide, AnArmedPopupIsHiddenByThePollThatFindsAnotherProgram) {
    OnAutoHideTimer();
    g_foreground = kPopup;
    OnAutoHideTimer();
    ExpectUntouched();
    g_foreground = kForeign;
    OnAutoHideTimer();
    ExpectHidden();
}

TEST_F(AutoHide, WithoutAForegroundWindowThePollChangesNothing) {
    g_foreground = nullptr;
    g_app.popupArmed = true;
    OnAutoHideTimer();
    ExpectUntouched();
    EXPECT_TRUE(g_app.popupArmed);
}

TEST_F(AutoHide, WhileTheTrayMenuIsOpenThePollChangesNothing) {
    g_app.menuTracking = true;
    g_app.popupArmed = true;
    OnAutoHideTimer();
    ExpectUntouched();
    g_app.popupArmed = false;
    g_foreground = kPopup;
    OnAutoHideTimer();
    EXPECT_FALSE(g_app.popupArmed);
    ExpectUntouched();
}

TEST_F(AutoHide, AnInvisiblePopupStopsThePolling) {
    g_visible = false;
    g_app.popupArmed = true;
    OnAutoHideTimer();
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 6", "announce hidden"}));
    EXPECT_FALSE(g_app.popupShown);
    EXPECT_FALSE(g_app.popupArmed);
}

TEST_F(AutoHide, APopupThatIsNotShownStopsThePolling) {
    g_app.popupShown = false;
    g_app.popupArmed = true;
    OnAutoHideTimer();
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 6", "announce hidden"}));
    EXPECT_FALSE(g_app.popupArmed);
}
