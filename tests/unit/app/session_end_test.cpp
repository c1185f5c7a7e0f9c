// The program between the end of the session, or the destruction of its window, and the end of its process:
// nothing that arrives may change the screen, the cursors or the backlight again once they are restored.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/window_proc.h"
#include "brightness/display_targets.h"
#include "brightness/pwm_release.h"
#include "brightness/pwm_safe.h"
#include "filter/filter.h"
#include "filter/tinted_cursor.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "ui/popup_input.h"

AMBREL_USES_SEAMS(recorded_timers);

namespace {

HWND const kWindow = MakeHandle<HWND>(500);
HDC const kScreen = MakeHandle<HDC>(40);
HCURSOR const kCopy = MakeHandle<HCURSOR>(70);
HCURSOR const kTinted = MakeHandle<HCURSOR>(71);

}  // namespace

AMBREL_REPLACE(HCURSOR, BuildTintedCursor,
               (HCURSOR, const IconInfo&, const TintContexts&, const TintTables&)) {
    return kTinted;
}

namespace {

HANDLE WINAPI FakeLoadImageW(HINSTANCE, LPCWSTR, UINT, int, int, UINT) {
    return MakeHandle<HANDLE>(69);
}

// One cursor is enough.
HANDLE WINAPI FakeCopyImage(HANDLE, UINT, int, int, UINT) {
    return g_app.baseCursors[0] == nullptr ? kCopy : nullptr;
}

HICON WINAPI FakeCopyIcon(HICON) {
    return nullptr;
}

BOOL WINAPI FakeGetIconInfo(HICON, ICONINFO*) {
    return FALSE;
}

BOOL WINAPI FakeSetSystemCursor(HCURSOR, DWORD id) {
    Record("tinted cursor ", id);
    return TRUE;
}

BOOL WINAPI FakeDestroyCursor(HCURSOR cursor) {
    EXPECT_EQ(cursor, kCopy);
    Record("destroy copy");
    return TRUE;
}

BOOL WINAPI FakeSystemParametersInfoW(UINT action, UINT, void*, UINT) {
    if (action == SPI_SETCURSORS) Record("system cursors");
    return TRUE;
}

DisplayTargetList g_displays;
// Messages that are dispatched once while a display is queried: during the next enumeration, or during the
// next set, before or after the display changes.
std::function<void()> g_duringEnumeration;
std::function<void()> g_beforeSetTakesEffect;
std::function<void()> g_afterSetTakesEffect;

void Dispatch(std::function<void()>* pending) {
    const std::function<void()> message = *pending;
    *pending = nullptr;
    if (message) message();
}

HDC WINAPI FakeGetDc(HWND window) {
    EXPECT_EQ(window, nullptr);
    return kScreen;
}

int WINAPI FakeReleaseDc(HWND, HDC dc) {
    EXPECT_EQ(dc, kScreen);
    return 1;
}

BOOL WINAPI FakeSetDeviceGammaRamp(HDC, void* ramp) {
    const auto* entries = static_cast<const WORD*>(ramp);
    bool identity = true;
    for (int i = 0; i < 768; ++i)
        identity = identity && entries[i] == (i % 256) * 257;
    Record(identity ? "identity ramp" : "coloured ramp");
    return TRUE;
}

BOOL WINAPI FakeGetDeviceGammaRamp(HDC, void*) {
    return FALSE;
}

BOOL WINAPI FakeInvalidateRect(HWND, const RECT*, BOOL) {
    return TRUE;
}

BOOL WINAPI FakeShellNotifyIcon(DWORD, NOTIFYICONDATAW*) {
    return TRUE;
}

HWND WINAPI FakeSetCapture(HWND) {
    return nullptr;
}

BOOL WINAPI FakeReleaseCapture() {
    return TRUE;
}

void WINAPI FakePostQuitMessage(int) {}

BOOL WINAPI FakePostMessage(HWND, UINT, WPARAM, LPARAM) {
    return TRUE;
}

constexpr DWORD kMaxWait = 20000;  // ms

// While a test blocks the release, waits for the release time out immediately; otherwise they last until it
// has ended.
std::atomic<HANDLE> g_continueRelease = nullptr;  // an event; null: not blocked
DWORD g_windowThread = 0;

DWORD WINAPI FakeWaitForSingleObject(HANDLE object, DWORD) {
    return g_continueRelease != nullptr ? DWORD{WAIT_TIMEOUT} : Real(&WaitForSingleObject)(object, kMaxWait);
}

void BlockReleaseThread() {
    if (HANDLE event = g_continueRelease) Real (&WaitForSingleObject)(event, kMaxWait);
}

LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return MainWindowProc(kWindow, message, wParam, lParam);
}

bool WasCalled(const std::string& expected) {
    for (const std::string& call : g_calls) {
        if (call == expected) return true;
    }
    return false;
}

bool WasColoured() {
    return WasCalled("coloured ramp") || WasCalled("tinted cursor 32512");
}

CallRecord Sets() {
    CallRecord sets;
    for (const std::string& call : g_calls) {
        if (call.rfind("set ", 0) == 0 && call.rfind("set timer", 0) != 0) sets.push_back(call);
    }
    return sets;
}

void SetPercent(const std::wstring& name, std::uint32_t percent) {
    for (DisplayTarget& display : g_displays) {
        if (display.name == name) display.percent = percent;
    }
}

class SessionEnd : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_app.filterOn = true;
        g_app.useLegacyGamma = true;
        g_calls.clear();
        ApplyFilter();
        ASSERT_EQ(g_calls, (CallRecord{"coloured ramp", "tinted cursor 32512"}));
        g_calls.clear();
        g_displays.clear();
        g_duringEnumeration = nullptr;
        g_beforeSetTakesEffect = nullptr;
        g_afterSetTakesEffect = nullptr;
        g_windowThread = GetCurrentThreadId();
    }
    void TearDown() override {
        FinishTheRelease();
        EXPECT_TRUE(FinishPwmSafeRelease());
    }

    // From now on the release waits before the first display.
    static void BlockTheRelease() { g_continueRelease = CreateEventW(nullptr, TRUE, FALSE, nullptr); }
    static void FinishTheRelease() {
        if (HANDLE event = g_continueRelease.exchange(nullptr)) SetEvent(event);
        WaitForPwmSafeRelease(kMaxWait);
    }

    static void ConnectDisplays() {
        g_displays = {{TargetKind::WmiPanel, L"panel", 0, 100, 40},
                      {TargetKind::DdcMonitor, L"monitor", 0, 100, 60}};
    }

    static void LockTheDisplays() {
        ConnectDisplays();
        g_app.pwmSafe = true;
        Send(WM_TIMER, 4);
        Send(WM_TIMER, 5);
        ASSERT_TRUE(g_app.pwmLockConfirmed);
        g_calls.clear();
    }

    // The warmth slider's track is at x = 80, from y = 107 to 305.
    static void HoldTheWarmthSlider() {
        Send(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(80, 200));
        Send(WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(80, 190));
        ASSERT_TRUE(WasCalled("coloured ramp"));
        ASSERT_TRUE(WasCalled("tinted cursor 32512"));
        g_calls.clear();
    }
};

}  // namespace

AMBREL_SEAM(LoadImageW, FakeLoadImageW);
AMBREL_SEAM(CopyImage, FakeCopyImage);
AMBREL_SEAM(CopyIcon, FakeCopyIcon);
AMBREL_SEAM(GetIconInfo, FakeGetIconInfo);
AMBREL_SEAM(SetSystemCursor, FakeSetSystemCursor);
AMBREL_SEAM(DestroyCursor, FakeDestroyCursor);
AMBREL_SEAM(SystemParametersInfoW, FakeSystemParametersInfoW);
AMBREL_REPLACE(void, EnumerateTargets, (DisplayTargetList * list)) {
    if (GetCurrentThreadId() != g_windowThread) BlockReleaseThread();
    for (const DisplayTarget& display : g_displays) {
        list->push_back(display);
        Dispatch(&g_duringEnumeration);
    }
}

AMBREL_REPLACE(void, CountTargets, (const DisplayTargetList& list)) {
    g_app.pwmTargetsPresent = !list.empty();
    g_app.pwmTargetCount = static_cast<std::int32_t>(list.size());
    g_app.pwmTargetsAt100 = 0;
    for (const DisplayTarget& display : list)
        g_app.pwmTargetsAt100 += display.percent == 100 ? 1 : 0;
}

AMBREL_REPLACE(bool, SetTargetBrightness, (const DisplayTarget& target, std::uint32_t percent)) {
    Record("set ", Narrow(target.name), " ", percent);
    Dispatch(&g_beforeSetTakesEffect);
    SetPercent(target.name, percent);
    Dispatch(&g_afterSetTakesEffect);
    return true;
}

AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save settings with the mode ", g_app.pwmSafe ? "on" : "off");
}

AMBREL_SEAM(GetDC, FakeGetDc);
AMBREL_SEAM(ReleaseDC, FakeReleaseDc);
AMBREL_SEAM(SetDeviceGammaRamp, FakeSetDeviceGammaRamp);
AMBREL_SEAM(GetDeviceGammaRamp, FakeGetDeviceGammaRamp);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);
AMBREL_SEAM(Shell_NotifyIconW, FakeShellNotifyIcon);
AMBREL_SEAM(SetCapture, FakeSetCapture);
AMBREL_SEAM(ReleaseCapture, FakeReleaseCapture);
AMBREL_SEAM(PostQuitMessage, FakePostQuitMessage);
AMBREL_SEAM(PostMessageW, FakePostMessage);
AMBREL_SEAM(WaitForSingleObject, FakeWaitForSingleObject);

TEST_F(SessionEnd, ASliderThatIsStillHeldDoesNotColourTheScreenAgain) {
    HoldTheWarmthSlider();
    Send(WM_ENDSESSION, TRUE);
    Send(WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(80, 150));
    Send(WM_LBUTTONUP, 0, MAKELPARAM(80, 150));
    EXPECT_FALSE(WasColoured());
}

TEST_F(SessionEnd, TheCursorsAreRestoredBeforeTheRampAndTheirCopiesAreFreed) {
    Send(WM_ENDSESSION, TRUE);
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 2", "kill timer 4", "kill timer 5", "system cursors",
                                   "destroy copy", "identity ramp"}));
    EXPECT_FALSE(g_app.cursorsTinted);
    EXPECT_FALSE(g_app.baseCursorsLoaded);
}

TEST_F(SessionEnd, DestroyingTheWindowAfterwardsDoesNotFreeTheCopiesAgain) {
    Send(WM_ENDSESSION, TRUE);
    g_calls.clear();
    Send(WM_DESTROY);
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 4", "kill timer 5", "kill timer 6", "identity ramp"}));
}

TEST_F(SessionEnd, ClicksAfterwardsDoNotColourTheScreenAgain) {
    Send(WM_ENDSESSION, TRUE);
    g_calls.clear();
    ApplyPreset(FilterPreset::Night);
    g_app.magnificationReady = true;
    ToggleLegacyMode();
    ToggleLegacyMode();
    EXPECT_TRUE(WasCalled("identity ramp"));
    EXPECT_FALSE(WasColoured());
    EXPECT_FALSE(g_app.cursorsTinted);
}

TEST_F(SessionEnd, NeitherADisplayChangeNorATimerColoursTheScreenAgain) {
    Send(WM_DISPLAYCHANGE);
    Send(WM_ENDSESSION, TRUE);
    for (const WPARAM timer : {2U, 4U, 5U})
        Send(WM_TIMER, timer);
    Send(WM_DISPLAYCHANGE);
    Send(WM_TIMER, 2);
    EXPECT_FALSE(WasColoured());
}

TEST_F(SessionEnd, TheSliderKeepsWorkingIfTheSessionContinues) {
    HoldTheWarmthSlider();
    Send(WM_ENDSESSION, FALSE);
    EXPECT_TRUE(g_calls.empty());
    Send(WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(80, 150));
    EXPECT_TRUE(WasColoured());
}

TEST_F(SessionEnd, AHandlerThatOutlivesTheWindowDoesNotColourTheScreenAgain) {
    HoldTheWarmthSlider();
    Send(WM_DESTROY);
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 4", "kill timer 5", "kill timer 6", "system cursors",
                                   "destroy copy", "identity ramp"}));
    g_calls.clear();
    OnMouseMove(80, 150);
    ApplyFilter();
    EXPECT_FALSE(WasColoured());
}

TEST_F(SessionEnd, TheDisplaysAreRestoredAndNotSetAgain) {
    LockTheDisplays();
    Send(WM_ENDSESSION, TRUE);
    EXPECT_EQ(Sets(), (CallRecord{"set panel 40", "set monitor 60"}));
    g_calls.clear();
    Send(WM_DISPLAYCHANGE);
    for (const WPARAM timer : {2U, 4U, 5U, 4U, 5U})
        Send(WM_TIMER, timer);
    Send(WM_POWERBROADCAST, PBT_APMRESUMEAUTOMATIC);
    Send(WM_TIMER, 2);
    EXPECT_EQ(Sets(), CallRecord{});
}

TEST_F(SessionEnd, TheDisplaysAreRestoredWhenTheWindowIsDestroyed) {
    LockTheDisplays();
    Send(WM_DESTROY);
    EXPECT_EQ(Sets(), (CallRecord{"set panel 40", "set monitor 60"}));
    g_calls.clear();
    Send(WM_TIMER, 4);
    Send(WM_TIMER, 2);
    EXPECT_EQ(Sets(), CallRecord{});
}

TEST_F(SessionEnd, TheModeIsNotSavedAsOff) {
    LockTheDisplays();
    Send(WM_ENDSESSION, TRUE);
    Send(WM_DESTROY);
    EXPECT_TRUE(g_app.pwmSafe);
    for (const std::string& call : g_calls)
        EXPECT_EQ(call.find("save"), std::string::npos) << call;
}

TEST_F(SessionEnd, TheLockIsKeptIfTheSessionContinues) {
    LockTheDisplays();
    Send(WM_ENDSESSION, FALSE);
    EXPECT_EQ(Sets(), CallRecord{});
    SetPercent(L"monitor", 60);
    Send(WM_TIMER, 4);
    EXPECT_EQ(Sets(), (CallRecord{"set panel 100", "set monitor 100"}));
}

// COM dispatches WM_ENDSESSION while it waits for a panel.
TEST_F(SessionEnd, ASessionEndDuringAnEnumerationPreventsTheLock) {
    ConnectDisplays();
    g_app.pwmSafe = true;
    g_duringEnumeration = [] { Send(WM_ENDSESSION, TRUE); };
    Send(WM_TIMER, 4);
    EXPECT_EQ(Sets(), CallRecord{});
}

TEST_F(SessionEnd, ASessionEndWhileAPanelIsLockedRestoresEveryDisplay) {
    ConnectDisplays();
    g_app.pwmSafe = true;
    g_afterSetTakesEffect = [] { Send(WM_ENDSESSION, TRUE); };
    Send(WM_TIMER, 4);
    EXPECT_EQ(g_displays[0].percent, 40U);
    EXPECT_EQ(g_displays[1].percent, 60U);
}

// The release restores the panel before it accepts the pending 100 percent.
TEST_F(SessionEnd, ASessionEndBeforeAPendingLockReachesThePanelRestoresIt) {
    ConnectDisplays();
    g_app.pwmSafe = true;
    g_beforeSetTakesEffect = [] { Send(WM_ENDSESSION, TRUE); };
    Send(WM_TIMER, 4);
    EXPECT_EQ(Sets(), (CallRecord{"set panel 100", "set panel 40", "set panel 40"}));
    EXPECT_EQ(g_displays[0].percent, 40U);
    EXPECT_EQ(g_displays[1].percent, 60U);
}

TEST_F(SessionEnd, ASessionEndDuringSwitchingOffRestoresTheRemainingDisplays) {
    LockTheDisplays();
    g_beforeSetTakesEffect = [] { Send(WM_ENDSESSION, TRUE); };
    TogglePwmSafeByUser();
    EXPECT_EQ(Sets(), (CallRecord{"set panel 40", "set monitor 60"}));
    EXPECT_EQ(g_calls.back(), "save settings with the mode off");
}

TEST_F(SessionEnd, ASessionEndDuringAVerificationDoesNotSaveTheModeAsOff) {
    LockTheDisplays();
    g_app.pwmVerifyPending = true;
    g_app.pwmVerifyIsUserToggle = true;
    g_duringEnumeration = [] { Send(WM_ENDSESSION, TRUE); };
    Send(WM_TIMER, 5);
    EXPECT_EQ(g_displays[0].percent, 40U);
    EXPECT_EQ(g_displays[1].percent, 60U);
    for (const std::string& call : g_calls)
        EXPECT_EQ(call.find("save"), std::string::npos) << call;
}

// The end of the session is cancelled.

TEST_F(SessionEnd, TheScreenIsRestoredEvenIfTheDisplaysHaveNotAnswered) {
    LockTheDisplays();
    BlockTheRelease();
    Send(WM_ENDSESSION, TRUE);
    EXPECT_TRUE(WasCalled("system cursors"));
    EXPECT_TRUE(WasCalled("identity ramp"));
    EXPECT_EQ(Sets(), CallRecord{});
    FinishTheRelease();
    EXPECT_EQ(Sets(), (CallRecord{"set panel 40", "set monitor 60"}));
}

TEST_F(SessionEnd, DestroyingTheWindowDuringTheReleaseReleasesNothingAgain) {
    LockTheDisplays();
    BlockTheRelease();
    Send(WM_ENDSESSION, TRUE);
    Send(WM_DESTROY);
    FinishTheRelease();
    EXPECT_EQ(Sets(), (CallRecord{"set panel 40", "set monitor 60"}));
}

TEST_F(SessionEnd, UserInputAppliesFilterAndLockAgain) {
    const std::pair<UINT, LPARAM> inputs[] = {
        {WM_LBUTTONDOWN, MAKELPARAM(5, 60)}, {kMessageTray, WM_LBUTTONUP}, {kMessageShowPopup, 0}};
    for (const auto& [message, position] : inputs) {
        SetUp();
        LockTheDisplays();
        Send(WM_ENDSESSION, TRUE);
        Send(message, 0, position);
        EXPECT_FALSE(g_app.ending) << message;
        g_calls.clear();
        Send(WM_TIMER, 2);
        EXPECT_TRUE(WasColoured()) << message;
        EXPECT_EQ(Sets(), (CallRecord{"set panel 100", "set monitor 100"})) << message;
        Send(WM_TIMER, 5);
        EXPECT_TRUE(g_app.pwmLockConfirmed) << message;
        EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"monitor", 60}, {L"panel", 40}})) << message;
    }
}

TEST_F(SessionEnd, OnlyUserInputContinuesTheSession) {
    LockTheDisplays();
    Send(WM_ENDSESSION, TRUE);
    g_calls.clear();
    Send(WM_DISPLAYCHANGE);
    Send(WM_POWERBROADCAST, PBT_APMRESUMEAUTOMATIC);
    for (const WPARAM timer : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U})
        Send(WM_TIMER, timer);
    Send(kMessagePwmSafeDeferred);
    Send(WM_ENDSESSION, FALSE);
    Send(WM_MOUSEMOVE, 0, MAKELPARAM(80, 190));
    Send(WM_LBUTTONUP, 0, MAKELPARAM(80, 190));
    EXPECT_TRUE(g_app.ending);
    EXPECT_FALSE(WasColoured());
    EXPECT_EQ(Sets(), CallRecord{});
}

TEST_F(SessionEnd, ADeferredRequestIsDropped) {
    LockTheDisplays();
    g_app.pwmDeferred = PwmRequest::SwitchOff;
    Send(WM_ENDSESSION, TRUE);
    Send(kMessagePwmSafeDeferred);
    EXPECT_TRUE(g_app.ending);
    EXPECT_TRUE(g_app.pwmSafe);
    EXPECT_EQ(g_app.pwmDeferred, PwmRequest::None);
}

// The user's values are 40 and 60; during the release a display may still read the 100 of the lock.
TEST_F(SessionEnd, AReleaseThatOutlastsTheEndKeepsTheUsersValues) {
    LockTheDisplays();
    BlockTheRelease();
    Send(WM_ENDSESSION, TRUE);
    Send(kMessageShowPopup);
    Send(WM_TIMER, 2);
    Send(WM_TIMER, 4);
    EXPECT_EQ(Sets(), CallRecord{});
    FinishTheRelease();
    Send(kMessagePwmSafeDeferred);
    EXPECT_EQ(Sets(), (CallRecord{"set panel 40", "set monitor 60", "set panel 100", "set monitor 100"}));
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"monitor", 60}, {L"panel", 40}}));
    g_calls.clear();
    Send(WM_DESTROY);
    EXPECT_EQ(Sets(), (CallRecord{"set panel 40", "set monitor 60"}));
}

TEST_F(SessionEnd, ASecondEndDuringTheReleaseOfTheFirstReleasesNothingAgain) {
    LockTheDisplays();
    BlockTheRelease();
    Send(WM_ENDSESSION, TRUE);
    Send(kMessageShowPopup);
    Send(WM_TIMER, 2);
    Send(WM_ENDSESSION, TRUE);
    FinishTheRelease();
    Send(kMessagePwmSafeDeferred);
    EXPECT_EQ(Sets(), (CallRecord{"set panel 40", "set monitor 60"}));
}
