#include "app/tray_events.h"

#include <gtest/gtest.h>

#include <utility>

#include "app/popup.h"
#include "app/sent_message.h"
#include "app/session_end.h"
#include "app/shell/tray_icon.h"
#include "app/state/app_state.h"
#include "app/tray_menu.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_timers);
AMBREL_USES_SEAMS(recorded_log);

namespace {

bool g_shellAccepts = false;
int g_shellAcceptsFrom = 0;  // the number of the add that is accepted first; 0: see g_shellAccepts
int g_addCount = 0;
void (*g_duringShellCall)() = nullptr;
bool g_sent = false;
bool g_windowVisible = false;
ULONGLONG g_now = 0;

HWND const kWindow = MakeHandle<HWND>(500);

BOOL WINAPI FakeIsWindowVisible(HWND window) {
    EXPECT_EQ(window, kWindow);
    return g_windowVisible;
}

ULONGLONG WINAPI FakeGetTickCount64() {
    return g_now;
}

BOOL WINAPI FakePostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    EXPECT_EQ(window, kWindow);
    Record("post ", message, " ", wParam, " ", lParam);
    return TRUE;
}

}  // namespace

AMBREL_SEAM(PostMessageW, FakePostMessage);
AMBREL_SEAM(IsWindowVisible, FakeIsWindowVisible);
AMBREL_SEAM(GetTickCount64, FakeGetTickCount64);

AMBREL_REPLACE(bool, ShouldPostAgain, ()) {
    return g_sent;
}
AMBREL_REPLACE(void, ShowPopup, ()) {
    Record("show popup");
}
AMBREL_REPLACE(void, HidePopup, ()) {
    Record("hide popup");
}
AMBREL_REPLACE(void, ShowTrayMenu, ()) {
    Record("show menu");
}
AMBREL_REPLACE(bool, AddTrayIcon, ()) {
    g_addCount += 1;
    Record("add icon");
    if (const auto dispatch = std::exchange(g_duringShellCall, nullptr)) dispatch();
    return g_shellAccepts || (g_shellAcceptsFrom != 0 && g_addCount >= g_shellAcceptsFrom);
}
AMBREL_REPLACE(void, UpdateTrayIcon, ()) {
    Record("update icon");
}
AMBREL_REPLACE(void, RemoveTrayIcon, ()) {
    Record("remove icon");
}
AMBREL_REPLACE(void, ContinueSession, ()) {
    if (g_app.ending) Record("continue session");
    g_app.ending = false;
}

namespace {

class TrayEvents : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_calls.clear();
        g_shellAccepts = false;
        g_shellAcceptsFrom = 0;
        g_addCount = 0;
        g_duringShellCall = nullptr;
        g_sent = false;
        g_windowVisible = false;
        g_now = 1'000'000;
    }

    static void RunRetries(int count) {
        for (int i = 0; i < count; ++i)
            OnTrayRetryTimer();
    }

    static CallRecord CallsAfter(std::size_t skipped) {
        return CallRecord(g_calls.begin() + static_cast<std::ptrdiff_t>(skipped), g_calls.end());
    }
};

}  // namespace

TEST_F(TrayEvents, AClickOnTheIconHidesTheVisiblePopup) {
    g_windowVisible = true;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"hide popup"}));
}

TEST_F(TrayEvents, AClickHidesTheVisiblePopupEvenRightAfterAHide) {
    g_windowVisible = true;
    g_app.popupHiddenAt = g_now;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"hide popup"}));
}

TEST_F(TrayEvents, AClickOnTheIconShowsTheHiddenPopup) {
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"show popup"}));
}

TEST_F(TrayEvents, TheClickThatHidThePopupDoesNotShowItAgain) {
    g_app.popupHiddenAt = 1'000'000;
    g_now = 1'000'000;
    OnTrayCallback(WM_LBUTTONUP);
    g_now = 1'000'249;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(TrayEvents, AClick250MillisecondsAfterTheHideOpensThePopup) {
    g_app.popupHiddenAt = 1'000'000;
    g_now = 1'000'250;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"show popup"}));
}

TEST_F(TrayEvents, ARightClickOnTheIconShowsTheMenu) {
    for (const bool visible : {false, true}) {
        g_windowVisible = visible;
        g_calls.clear();
        OnTrayCallback(WM_RBUTTONUP);
        EXPECT_EQ(g_calls, (CallRecord{"show menu"}));
    }
}

TEST_F(TrayEvents, OtherMessagesOfTheIconAreIgnored) {
    g_windowVisible = true;
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_RBUTTONDOWN, WM_MOUSEMOVE, WM_MBUTTONUP,
                               WM_CONTEXTMENU, WM_NULL}) {
        OnTrayCallback(message);
    }
    EXPECT_TRUE(g_calls.empty());
}

// COM rejects the WMI calls of built-in panels in a sent message. WM_USER + 1 is 1025, WM_LBUTTONUP 514.
TEST_F(TrayEvents, AClickThatTheShellSendsIsPostedAgain) {
    g_sent = true;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"post 1025 0 514"}));
    g_calls.clear();
    OnTrayCallback(WM_RBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"post 1025 0 517"}));
    g_calls.clear();
    g_sent = false;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"show popup"}));
}

TEST_F(TrayEvents, MovesOverTheIconAreNotPostedAgain) {
    g_sent = true;
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_RBUTTONDOWN, WM_LBUTTONDBLCLK})
        OnTrayCallback(message);
    EXPECT_TRUE(g_calls.empty());
}

// The display query may take longer than the reopen delay before a posted click is handled.
TEST_F(TrayEvents, ASentClickThatHidThePopupIsDiscardedWhenItArrives) {
    g_sent = true;
    g_app.popupHiddenAt = g_now - 249;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_TRUE(g_calls.empty());
    g_now += 1;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"post 1025 0 514"}));
    g_calls.clear();
    g_app.popupHiddenAt = g_now;
    g_windowVisible = true;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"post 1025 0 514"}));
}

TEST_F(TrayEvents, ARetryDuringWhichTheNewTaskbarAddsTheIconSucceeds) {
    g_shellAcceptsFrom = 2;
    // The nested add is the second one and is accepted; the outer one is refused because the icon exists.
    g_duringShellCall = [] {
        OnTaskbarCreated();
        g_shellAcceptsFrom = 0;
    };
    OnTrayRetryTimer();
    EXPECT_TRUE(g_app.trayIconAdded);
    OnTrayRetryTimer();
    EXPECT_EQ(g_calls.back(), "kill timer 7");
    EXPECT_EQ(g_addCount, 2);
}

TEST_F(TrayEvents, ANewTaskbarGetsTheIconAndStopsTheRetries) {
    g_shellAccepts = true;
    OnTaskbarCreated();
    EXPECT_EQ(g_calls, (CallRecord{"log: TaskbarCreated received - (re)adding tray icon", "remove icon",
                                   "add icon", "update icon", "kill timer 7"}));
    EXPECT_TRUE(g_app.trayIconAdded);
}

TEST_F(TrayEvents, AFailedReAddNeitherStartsNorStopsATimer) {
    g_app.trayIconAdded = true;
    OnTaskbarCreated();
    EXPECT_EQ(g_calls,
              (CallRecord{"log: TaskbarCreated received - (re)adding tray icon", "remove icon", "add icon"}));
    EXPECT_FALSE(g_app.trayIconAdded);
}

TEST_F(TrayEvents, ASecondNewTaskbarIsHandledLikeTheFirst) {
    g_shellAccepts = true;
    OnTaskbarCreated();
    const CallRecord first = g_calls;
    g_calls.clear();
    OnTaskbarCreated();
    EXPECT_EQ(g_calls, first);
    EXPECT_TRUE(g_app.trayIconAdded);
}

TEST_F(TrayEvents, AnIconThatExistsStopsTheRetriesWithoutAnotherAdd) {
    g_app.trayIconAdded = true;
    OnTrayRetryTimer();
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 7"}));
    EXPECT_EQ(g_app.trayRetryCount, 0);
}

TEST_F(TrayEvents, TheFirstRetryMaySucceed) {
    g_shellAccepts = true;
    OnTrayRetryTimer();
    EXPECT_EQ(g_calls,
              (CallRecord{"add icon", "log: Tray icon added after 1 retry", "kill timer 7", "update icon"}));
    EXPECT_TRUE(g_app.trayIconAdded);
    EXPECT_EQ(g_app.trayRetryCount, 1);
}

TEST_F(TrayEvents, TwoRetriesAreInThePlural) {
    g_shellAcceptsFrom = 2;
    RunRetries(2);
    EXPECT_EQ(g_calls, (CallRecord{"add icon", "add icon", "log: Tray icon added after 2 retries",
                                   "kill timer 7", "update icon"}));
}

TEST_F(TrayEvents, AfterNineteenFailuresTheRetriesContinue) {
    RunRetries(19);
    EXPECT_EQ(g_calls, CallRecord(19, "add icon"));
    EXPECT_EQ(g_app.trayRetryCount, 19);
}

TEST_F(TrayEvents, TheTwentiethFailureIsTheLast) {
    RunRetries(20);
    EXPECT_EQ(CallsAfter(19),
              (CallRecord{"add icon", "log: Tray icon add gave up after 20 retries", "kill timer 7"}));
    EXPECT_FALSE(g_app.trayIconAdded);
    EXPECT_EQ(g_app.trayRetryCount, 20);
}

TEST_F(TrayEvents, TheTwentiethRetryMayStillSucceed) {
    g_shellAcceptsFrom = 20;
    RunRetries(20);
    EXPECT_EQ(CallsAfter(19), (CallRecord{"add icon", "log: Tray icon added after 20 retries", "kill timer 7",
                                          "update icon"}));
    EXPECT_TRUE(g_app.trayIconAdded);
}

TEST_F(TrayEvents, AFailedReAddLeavesARunningRetryRunning) {
    RunRetries(3);
    OnTaskbarCreated();
    g_calls.clear();
    g_shellAccepts = true;
    OnTrayRetryTimer();
    EXPECT_EQ(g_calls, (CallRecord{"add icon", "log: Tray icon added after 4 retries", "kill timer 7",
                                   "update icon"}));
}

TEST_F(TrayEvents, AClickOnTheIconContinuesASessionThatWasEnding) {
    for (const LPARAM message : {WM_LBUTTONUP, WM_RBUTTONUP}) {
        g_app.ending = true;
        g_calls.clear();
        OnTrayCallback(message);
        EXPECT_EQ(g_calls.front(), "continue session");
    }
}

TEST_F(TrayEvents, AClickThatOnlyHidThePopupContinuesTheSessionToo) {
    g_app.ending = true;
    g_app.popupHiddenAt = g_now;
    g_sent = true;
    OnTrayCallback(WM_LBUTTONUP);
    EXPECT_EQ(g_calls, (CallRecord{"continue session"}));
}

TEST_F(TrayEvents, NothingElseFromTheTrayContinuesASession) {
    g_app.ending = true;
    for (const LPARAM message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_RBUTTONDOWN})
        OnTrayCallback(message);
    OnTaskbarCreated();
    OnTrayRetryTimer();
    EXPECT_TRUE(g_app.ending);
}
