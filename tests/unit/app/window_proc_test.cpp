#include "app/window_proc.h"
#include "app/recorded_pwm_safe.h"

#include <gtest/gtest.h>

#include "app/accessibility.h"
#include "app/auto_hide.h"
#include "app/display_events.h"
#include "app/notices.h"
#include "app/popup.h"
#include "app/power_events.h"
#include "app/session_end.h"
#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/tray_events.h"
#include "app/window_lifetime.h"
#include "filter/gamma_fix.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "ui/accessible_events.h"
#include "ui/popup_input.h"
#include "ui/popup_painter.h"

AMBREL_USES_SEAMS(recorded_timers);

// Every handler is replaced. The tests check which handler is called, its arguments and the result.
AMBREL_REPLACE(void, ShowLegacyNotice, ()) {
    Record("legacy notice");
}
AMBREL_REPLACE(void, ShowMagnificationError, (int error)) {
    Record("magnification error ", error);
}
AMBREL_REPLACE(void, ShowPopup, ()) {
    Record("show popup");
}
AMBREL_REPLACE(void, HidePopup, ()) {
    Record("hide popup");
}
AMBREL_REPLACE(void, OnPowerBroadcast, (WPARAM event, LPARAM data)) {
    Record("power ", event, " ", data);
}
AMBREL_REPLACE(void, OnDisplayChange, ()) {
    Record("display change");
}
AMBREL_REPLACE(void, OnDpiChanged, (UINT dpi, const RECT* suggested)) {
    Record("dpi ", dpi, " at ", suggested->left, " ", suggested->top);
}
AMBREL_REPLACE(void, OnDisplaysSettled, ()) {
    Record("displays settled");
}
AMBREL_REPLACE(void, OnMouseDown, (int x, int y)) {
    Record("mouse down ", x, " ", y);
}
AMBREL_REPLACE(void, OnMouseMove, (int x, int y)) {
    Record("mouse move ", x, " ", y);
}
AMBREL_REPLACE(void, OnMouseUp, ()) {
    Record("mouse up");
}
AMBREL_REPLACE(void, OnCaptureLost, ()) {
    Record("capture lost");
}
AMBREL_REPLACE(void, OnTrayCallback, (LPARAM mouseMessage)) {
    Record("tray ", mouseMessage);
}
AMBREL_REPLACE(void, OnTaskbarCreated, ()) {
    Record("taskbar created");
}
AMBREL_REPLACE(void, OnTrayRetryTimer, ()) {
    Record("tray retry");
}
AMBREL_REPLACE(void, OnGammaFixTimer, ()) {
    Record("gamma fix");
}
AMBREL_REPLACE(void, OnCreate, (HWND window)) {
    Record("create ", ValueOf(window));
}
AMBREL_REPLACE(void, OnDestroy, ()) {
    Record("destroy");
}
AMBREL_REPLACE(void, ContinueSession, ()) {
    Record("continue session");
}
AMBREL_REPLACE(void, OnEndSession, (bool ending, LPARAM reason)) {
    Record("end session ", ending, " for ", reason);
}
AMBREL_REPLACE(void, OnActivate, (WORD state, HWND other)) {
    Record("activate ", state, " ", ValueOf(other));
}
AMBREL_REPLACE(void, OnAutoHideTimer, ()) {
    Record("auto hide");
}
AMBREL_REPLACE(void, PaintPopup, (HWND window)) {
    Record("paint ", ValueOf(window));
}
AMBREL_REPLACE(void, AnnouncePanel, ()) {
    Record("announce panel");
}
AMBREL_REPLACE(void, AnnounceEnabling, ()) {
    Record("announce enabling");
}
AMBREL_REPLACE(LRESULT, OnGetObject, (HWND window, WPARAM wParam, LPARAM lParam)) {
    Record("get object ", ValueOf(window), " ", wParam, " ", lParam);
    return 815;
}
AMBREL_REPLACE(void, OnAccessibleActions, ()) {
    Record("accessible actions");
}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save settings");
}

namespace {

constexpr LRESULT kDefaultAnswer = 4711;

HWND const kWindow = MakeHandle<HWND>(500);

LRESULT WINAPI FakeDefWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Record("default ", ValueOf(window), " ", message, " ", wParam, " ", lParam);
    return kDefaultAnswer;
}

LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return MainWindowProc(kWindow, message, wParam, lParam);
}

class WindowProc : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_calls.clear();
    }
};

}  // namespace

AMBREL_SEAM(DefWindowProcW, FakeDefWindowProc);

TEST_F(WindowProc, TheRegisteredTaskbarMessageAddsTheIconAgain) {
    g_app.taskbarCreatedMessage = 0xC123;
    EXPECT_EQ(Send(0xC123), 0);
    EXPECT_EQ(g_calls, (CallRecord{"taskbar created"}));
}

TEST_F(WindowProc, TheTaskbarMessageIsTestedBeforeEveryOther) {
    g_app.taskbarCreatedMessage = WM_CLOSE;
    Send(WM_CLOSE);
    EXPECT_EQ(g_calls, (CallRecord{"taskbar created"}));
}

TEST_F(WindowProc, WithoutARegisteredTaskbarMessageMessage0IsNotMistakenForIt) {
    EXPECT_EQ(Send(WM_NULL), kDefaultAnswer);
    EXPECT_EQ(g_calls, (CallRecord{"default 500 0 0 0"}));
}

TEST_F(WindowProc, TheLegacyNoticeIsMessage8068) {
    EXPECT_EQ(Send(0x8068), 0);
    EXPECT_EQ(g_calls, (CallRecord{"legacy notice"}));
}

TEST_F(WindowProc, ASecondInstanceShowsThePopupWithMessage8069) {
    EXPECT_EQ(Send(0x8069), 0);
    EXPECT_EQ(g_calls, (CallRecord{"continue session", "show popup"}));
}

TEST_F(WindowProc, TheMagnificationErrorIsMessage806AWithTheCodeAsASignedNumber) {
    EXPECT_EQ(Send(0x806A, 87), 0);
    Send(0x806A, 0xFFFFFFFF);
    EXPECT_EQ(g_calls, (CallRecord{"magnification error 87", "magnification error -1"}));
}

TEST_F(WindowProc, AMessageBoxThatDisablesOrEnablesTheWindowIsAnnounced) {
    EXPECT_EQ(Send(WM_ENABLE, FALSE), 0);
    EXPECT_EQ(g_calls, (CallRecord{"announce enabling"}));
    EXPECT_EQ(Send(WM_ENABLE, TRUE), 0);
    EXPECT_EQ(g_calls, (CallRecord{"announce enabling", "announce enabling"}));
}

TEST_F(WindowProc, EveryPowerEventReturnsTrue) {
    EXPECT_EQ(Send(WM_POWERBROADCAST, 18), TRUE);
    EXPECT_EQ(Send(WM_POWERBROADCAST, 7), TRUE);
    EXPECT_EQ(Send(WM_POWERBROADCAST, 4), TRUE);
    EXPECT_EQ(Send(WM_POWERBROADCAST, 0), TRUE);
    EXPECT_EQ(Send(WM_POWERBROADCAST, 0x8013, 0x123456789), TRUE);
    EXPECT_EQ(g_calls,
              (CallRecord{"power 18 0", "power 7 0", "power 4 0", "power 0 0", "power 32787 4886718345"}));
}

TEST_F(WindowProc, MouseMessagesArriveWithTheirPosition) {
    EXPECT_EQ(Send(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(12, 345)), 0);
    EXPECT_EQ(Send(WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(13, 346)), 0);
    EXPECT_EQ(Send(WM_LBUTTONUP, 0, MAKELPARAM(13, 346)), 0);
    EXPECT_EQ(Send(WM_CAPTURECHANGED), 0);
    EXPECT_EQ(g_calls, (CallRecord{"continue session", "mouse down 12 345", "mouse move 13 346", "mouse up",
                                   "capture lost"}));
}

TEST_F(WindowProc, ACaptureThatTheWindowTakesAgainIsNotLost) {
    EXPECT_EQ(Send(WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(kWindow)), 0);
    EXPECT_TRUE(g_calls.empty());
    Send(WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(kWindow) + 1);
    EXPECT_EQ(g_calls, (CallRecord{"capture lost"}));
}

TEST_F(WindowProc, PositionsOutsideTheWindowAreNegative) {
    Send(WM_LBUTTONDOWN, 0, MAKELPARAM(0xFFFF, 0xFFFE));
    Send(WM_MOUSEMOVE, 0, MAKELPARAM(0x8000, 0xFED4));
    EXPECT_EQ(g_calls, (CallRecord{"continue session", "mouse down -1 -2", "mouse move -32768 -300"}));
}

TEST_F(WindowProc, ANewDpiIsTheHighWordWhenThereIsOneElseTheLowWord) {
    const RECT suggested = {-30, 40, 700, 900};
    const LPARAM rectangle = reinterpret_cast<LPARAM>(&suggested);
    EXPECT_EQ(Send(WM_DPICHANGED, MAKEWPARAM(144, 144), rectangle), 0);
    Send(WM_DPICHANGED, MAKEWPARAM(96, 192), rectangle);
    Send(WM_DPICHANGED, 120, rectangle);
    Send(WM_DPICHANGED, 0xFFFF, rectangle);
    EXPECT_EQ(g_calls, (CallRecord{"dpi 144 at -30 40", "dpi 192 at -30 40", "dpi 120 at -30 40",
                                   "dpi 65535 at -30 40"}));
}

TEST_F(WindowProc, TheTrayCallbackIsMessage1025WithTheMouseMessageInLParam) {
    EXPECT_EQ(Send(1025, 1, WM_LBUTTONUP), 0);
    EXPECT_EQ(Send(1025, 1, WM_RBUTTONUP), 0);
    EXPECT_EQ(g_calls, (CallRecord{"tray 514", "tray 517"}));
}

TEST_F(WindowProc, AClickIntoThePopupActivatesAndArmsIt) {
    EXPECT_EQ(Send(WM_MOUSEACTIVATE), MA_ACTIVATE);
    EXPECT_TRUE(g_app.popupArmed);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(WindowProc, ADisplayChangeIsForwarded) {
    EXPECT_EQ(Send(WM_DISPLAYCHANGE, 32, MAKELPARAM(1920, 1080)), 0);
    EXPECT_EQ(g_calls, (CallRecord{"display change"}));
}

TEST_F(WindowProc, TheEndOfTheSessionIsForwardedWithItsArguments) {
    EXPECT_EQ(Send(WM_ENDSESSION, TRUE, 1), 0);
    EXPECT_EQ(Send(WM_ENDSESSION, FALSE), 0);
    EXPECT_EQ(g_calls, (CallRecord{"end session 1 for 1", "end session 0 for 0"}));
}

TEST_F(WindowProc, CreationPassesTheWindowAndContinues) {
    g_app.mainWindow = nullptr;
    EXPECT_EQ(Send(WM_CREATE), 0);
    EXPECT_EQ(g_calls, (CallRecord{"create 500"}));
}

TEST_F(WindowProc, DestructionIsForwarded) {
    EXPECT_EQ(Send(WM_DESTROY), 0);
    EXPECT_EQ(g_calls, (CallRecord{"destroy"}));
}

TEST_F(WindowProc, ActivationArrivesWithoutTheMinimisedFlag) {
    EXPECT_EQ(Send(WM_ACTIVATE, MAKEWPARAM(WA_INACTIVE, 1), 77), 0);
    Send(WM_ACTIVATE, WA_ACTIVE, 0);
    Send(WM_ACTIVATE, WA_CLICKACTIVE, 78);
    EXPECT_EQ(g_calls, (CallRecord{"activate 0 77", "activate 1 0", "activate 2 78"}));
}

TEST_F(WindowProc, APaintedPopupIsAnnounced) {
    EXPECT_EQ(Send(WM_PAINT), 0);
    EXPECT_EQ(g_calls, (CallRecord{"paint 500", "announce panel"}));
}

TEST_F(WindowProc, RequestsForAnAccessibleObjectAreAnsweredByTheirHandler) {
    EXPECT_EQ(Send(WM_GETOBJECT, 3, -4), 815);
    EXPECT_EQ(g_calls, (CallRecord{"get object 500 3 -4"}));
}

TEST_F(WindowProc, AccessibleActionsAreMessage806C) {
    EXPECT_EQ(Send(0x806C, 3, 4), 0);
    EXPECT_EQ(g_calls, (CallRecord{"accessible actions"}));
}

TEST_F(WindowProc, ClosingOnlyHidesThePopup) {
    EXPECT_EQ(Send(WM_CLOSE), 0);
    EXPECT_EQ(g_calls, (CallRecord{"hide popup"}));
}

TEST_F(WindowProc, TheBackgroundIsReportedAsErased) {
    EXPECT_EQ(Send(WM_ERASEBKGND, 99), 1);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(WindowProc, DeferredDisplayRequestsRunAndRefresh) {
    EXPECT_EQ(Send(0x806B), 0);
    EXPECT_EQ(g_calls, (CallRecord{"pwm deferred request", "refresh"}));
}

TEST_F(WindowProc, EveryOtherMessageGoesToDefWindowProc) {
    EXPECT_EQ(Send(WM_SIZE, 1, 2), kDefaultAnswer);
    EXPECT_EQ(Send(WM_QUERYENDSESSION, 0, 5), kDefaultAnswer);
    EXPECT_EQ(Send(0x806D, 3, 4), kDefaultAnswer);
    EXPECT_EQ(g_calls, (CallRecord{"default 500 5 1 2", "default 500 17 0 5", "default 500 32877 3 4"}));
}

TEST_F(WindowProc, InputForAFrameNeverReachesDefWindowProc) {
    // On a title bar, window menu, scroll bar, button and border.
    for (const WPARAM part : {2, 3, 6, 7, 8, 9, 17, 20, 21}) {
        EXPECT_EQ(Send(WM_NCLBUTTONDOWN, part, 5), 0);
        EXPECT_EQ(Send(WM_NCRBUTTONDOWN, part, 5), 0);
    }
    // Size, move, both scroll bars, the window menu by mouse and by keyboard, with and without Windows' own
    // bits.
    for (const WPARAM command : {0xF000, 0xF010, 0xF070, 0xF080, 0xF090, 0xF100}) {
        EXPECT_EQ(Send(WM_SYSCOMMAND, command, 5), 0);
        EXPECT_EQ(Send(WM_SYSCOMMAND, command + 3, 5), 0);
    }
    EXPECT_EQ(g_calls, CallRecord{});
}

TEST_F(WindowProc, EveryOtherCommandOfWindowsReachesDefWindowProc) {
    // Minimise, maximise, next, previous, close, restore, task list, screen saver, hot key, monitor power.
    for (const WPARAM command :
         {0xF020, 0xF030, 0xF040, 0xF050, 0xF060, 0xF120, 0xF130, 0xF140, 0xF150, 0xF170})
        EXPECT_EQ(Send(WM_SYSCOMMAND, command), kDefaultAnswer) << command;
    EXPECT_EQ(Send(WM_NCHITTEST), kDefaultAnswer);
    EXPECT_EQ(Send(WM_NCLBUTTONDBLCLK, 2), kDefaultAnswer);
    EXPECT_EQ(g_calls.size(), 12U);
}

TEST_F(WindowProc, AnotherRegisteredMessageIsNotMistakenForTheTaskbars) {
    g_app.taskbarCreatedMessage = 0xC123;
    EXPECT_EQ(Send(0xC124), kDefaultAnswer);
    EXPECT_EQ(g_calls, (CallRecord{"default 500 49444 0 0"}));
}

TEST_F(WindowProc, OneShotTimersAreKilledBeforeTheirAction) {
    EXPECT_EQ(Send(WM_TIMER, 1), 0);
    EXPECT_EQ(Send(WM_TIMER, 2), 0);
    EXPECT_EQ(Send(WM_TIMER, 3), 0);
    EXPECT_EQ(Send(WM_TIMER, 5), 0);
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 1", "save settings", "kill timer 2", "displays settled",
                                   "kill timer 3", "refresh", "kill timer 5", "pwm verify", "refresh"}));
}

TEST_F(WindowProc, PeriodicTimersKeepRunning) {
    EXPECT_EQ(Send(WM_TIMER, 4), 0);
    EXPECT_EQ(Send(WM_TIMER, 6), 0);
    EXPECT_EQ(Send(WM_TIMER, 7), 0);
    EXPECT_EQ(Send(WM_TIMER, 8), 0);
    EXPECT_EQ(g_calls,
              (CallRecord{"pwm refresh from timer", "refresh", "auto hide", "tray retry", "gamma fix"}));
}

TEST_F(WindowProc, UnknownTimersAreIgnored) {
    EXPECT_EQ(Send(WM_TIMER, 0), 0);
    EXPECT_EQ(Send(WM_TIMER, 9), 0);
    EXPECT_EQ(Send(WM_TIMER, 0x100000001), 0);
    EXPECT_EQ(Send(WM_TIMER, static_cast<WPARAM>(-1)), 0);
    EXPECT_TRUE(g_calls.empty());
}
