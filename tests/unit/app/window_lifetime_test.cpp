#include "app/window_lifetime.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "app/recorded_pwm_safe.h"
#include "app/session_end.h"
#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/legacy_gamma.h"
#include "filter/magnification.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/fake_clock.h"
#include "support/seam.h"
#include "ui/accessible_events.h"
#include "ui/accessible_object.h"

#include <oleacc.h>

AMBREL_USES_SEAMS(recorded_timers);

namespace {

bool g_announcedHidden = false;
bool g_destructionFails = false;

}  // namespace

// Before `ending` is set, a handler that is still running could tint the cursors again.
AMBREL_REPLACE(void, ReleaseCursorCopies, ()) {
    Record(g_app.ending ? "release cursor copies" : "release cursor copies too early");
}
AMBREL_REPLACE(void, TintSystemCursors, ()) {
    Record("tint cursors");
}
AMBREL_REPLACE(void, RestoreSystemCursors, ()) {
    Record("restore cursors");
}
AMBREL_REPLACE(void, ResetSystemCursors, ()) {
    Record("reset cursors");
}
AMBREL_REPLACE(void, RestoreIdentityRamp, ()) {
    Record("identity ramp");
}
AMBREL_REPLACE(void, ShutdownMagnification, ()) {
    Record("shut magnification down");
}
AMBREL_REPLACE(void, AnnouncePopup, (bool shown)) {
    EXPECT_NE(g_app.mainWindow, nullptr);
    g_announcedHidden = !shown;
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save settings");
}

namespace {

HWND const kWindow = MakeHandle<HWND>(500);
HANDLE const kMutex = MakeHandle<HANDLE>(0x5005);

BOOL WINAPI FakeShellNotifyIcon(DWORD message, NOTIFYICONDATAW* data) {
    Record("tray icon ",
           message == NIM_DELETE   ? "delete"
           : message == NIM_MODIFY ? "modify"
                                   : "add",
           " of ", ValueOf(data->hWnd));
    return TRUE;
}

BOOL WINAPI FakeInvalidateRect(HWND window, const RECT*, BOOL) {
    Record("invalidate ", ValueOf(window));
    return TRUE;
}

BOOL WINAPI FakeDestroyWindow(HWND window) {
    EXPECT_EQ(window, g_app.mainWindow);
    Record("destroy window");
    return g_destructionFails ? FALSE : TRUE;
}

BOOL WINAPI FakeDeleteObject(HGDIOBJ object) {
    if (object != nullptr) Record("delete object ", ValueOf(object));
    return TRUE;
}

BOOL WINAPI FakeDestroyIcon(HICON icon) {
    Record("destroy icon ", ValueOf(icon));
    return TRUE;
}

BOOL WINAPI FakeReleaseMutex(HANDLE mutex) {
    EXPECT_EQ(mutex, kMutex);
    Record("release mutex");
    return TRUE;
}

BOOL WINAPI FakeCloseHandle(HANDLE handle) {
    if (handle == kMutex) {
        Record("close mutex");
        return TRUE;
    }
    return Real(&CloseHandle)(handle);
}

CallRecord g_registrations;

void Registered(const std::string& what) {
    g_registrations.push_back(what);
}

HPOWERNOTIFY WINAPI FakeRegisterSuspendResume(HANDLE window, DWORD flags) {
    EXPECT_EQ(flags, 0U);  // DEVICE_NOTIFY_WINDOW_HANDLE
    Registered("resume for " + std::to_string(ValueOf(window)));
    return MakeHandle<HPOWERNOTIFY>(21);
}

HPOWERNOTIFY WINAPI FakeRegisterPowerSetting(HANDLE window, const GUID*, DWORD flags) {
    EXPECT_EQ(flags, 0U);
    Registered("display for " + std::to_string(ValueOf(window)));
    return MakeHandle<HPOWERNOTIFY>(22);
}

BOOL WINAPI FakeUnregisterSuspendResume(HPOWERNOTIFY handle) {
    Registered("end of " + std::to_string(ValueOf(handle)));
    return TRUE;
}

BOOL WINAPI FakeUnregisterPowerSetting(HPOWERNOTIFY handle) {
    Registered("end of " + std::to_string(ValueOf(handle)));
    return TRUE;
}

BOOL WINAPI FakeChangeMessageFilter(HWND window, UINT message, DWORD action, CHANGEFILTERSTRUCT* result) {
    EXPECT_EQ(window, kWindow);
    EXPECT_EQ(action, 1U);  // MSGFLT_ALLOW
    EXPECT_EQ(result, nullptr);
    Registered("allow " + std::to_string(message));
    return TRUE;
}

void WINAPI FakePostQuitMessage(int exitCode) {
    Record("quit ", exitCode);
}

class WindowLifetime : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_calls.clear();
        g_registrations.clear();
        g_destructionFails = false;
        g_noThreadForRelease = false;
        g_releaseDuration = 0;
        g_waitClock = &g_tick;
    }

    // Fonts are 801 to 808.
    static void CreateAllResources() {
        g_app.filterOn = true;
        g_app.trayIconData.hWnd = kWindow;
        g_app.logoBitmap = MakeHandle<HBITMAP>(600);
        g_app.backgroundBrush = MakeHandle<HBRUSH>(700);
        for (std::uintptr_t i = 0; i < kFontCount; ++i)
            g_app.fonts[i] = MakeHandle<HFONT>(801 + i);
        g_app.headerIcon = MakeHandle<HICON>(900);
        g_app.singleInstanceMutex = kMutex;
    }

    // The record from the first call that starts with the text.
    static CallRecord CallsFrom(const char* beginning) {
        const auto first = std::find_if(g_calls.begin(), g_calls.end(), [beginning](const std::string& call) {
            return call.starts_with(beginning);
        });
        return {first, g_calls.end()};
    }

    static std::ptrdiff_t TimesCalled(const char* call) {
        return std::count(g_calls.begin(), g_calls.end(), call);
    }
};

}  // namespace

AMBREL_SEAM(Shell_NotifyIconW, FakeShellNotifyIcon);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);
AMBREL_SEAM(DestroyWindow, FakeDestroyWindow);
AMBREL_SEAM(DeleteObject, FakeDeleteObject);
AMBREL_SEAM(DestroyIcon, FakeDestroyIcon);
AMBREL_SEAM(ReleaseMutex, FakeReleaseMutex);
AMBREL_SEAM(CloseHandle, FakeCloseHandle);
AMBREL_SEAM(PostQuitMessage, FakePostQuitMessage);
AMBREL_SEAM(RegisterSuspendResumeNotification, FakeRegisterSuspendResume);
AMBREL_SEAM(RegisterPowerSettingNotification, FakeRegisterPowerSetting);
AMBREL_SEAM(UnregisterSuspendResumeNotification, FakeUnregisterSuspendResume);
AMBREL_SEAM(UnregisterPowerSettingNotification, FakeUnregisterPowerSetting);
AMBREL_SEAM(ChangeWindowMessageFilterEx, FakeChangeMessageFilter);

TEST_F(WindowLifetime, CreationStoresTheWindowShowsTheMainPanelRestoresThePwmSafeModeAndRefreshes) {
    g_app.mainWindow = nullptr;
    g_app.panel = Panel::Settings;
    OnCreate(kWindow);
    EXPECT_EQ(g_app.mainWindow, kWindow);
    EXPECT_EQ(g_app.panel, Panel::Main);
    EXPECT_EQ(g_calls, (CallRecord{"pwm restore for 500", "invalidate 500", "tray icon modify of 500"}));
}

TEST_F(WindowLifetime, ACreationMessageOfAnotherProgramDoesNothing) {
    OnCreate(kWindow);
    EXPECT_TRUE(g_calls.empty());
    EXPECT_TRUE(g_registrations.empty());
}

// 32873 is WM_APP + 105, a second start's message.
TEST_F(WindowLifetime, CreationLetsTheMessagesOfTheTaskbarAndOfASecondStartThrough) {
    g_app.mainWindow = nullptr;
    g_app.taskbarCreatedMessage = 0xC123;
    OnCreate(kWindow);
    EXPECT_EQ(g_registrations,
              (CallRecord{"allow 49443", "allow 1025", "allow 32873", "resume for 500", "display for 500"}));
}

TEST_F(WindowLifetime, ATaskbarMessageThatIsNotRegisteredIsNotLetThrough) {
    g_app.mainWindow = nullptr;
    OnCreate(kWindow);
    EXPECT_EQ(g_registrations,
              (CallRecord{"allow 1025", "allow 32873", "resume for 500", "display for 500"}));
}

TEST_F(WindowLifetime, PowerEventsAreRegisteredForTheWindowsLife) {
    g_app.mainWindow = nullptr;
    OnCreate(kWindow);
    g_registrations.clear();
    OnDestroy();
    EXPECT_EQ(g_registrations, (CallRecord{"end of 21", "end of 22"}));
    EXPECT_EQ(g_app.resumeRegistration, nullptr);
    EXPECT_EQ(g_app.displayRegistration, nullptr);
}

TEST_F(WindowLifetime, DestructionRestoresAndReleasesEverythingInOrderAndSavesNothing) {
    CreateAllResources();
    OnDestroy();
    EXPECT_EQ(g_calls, (CallRecord{
                           "kill timer 4",
                           "kill timer 5",
                           "kill timer 6",
                           "pwm release at the end",
                           "pwm wait for release 1000",
                           "release cursor copies",
                           "identity ramp",
                           "pwm wait for release 25000",
                           "shut magnification down",
                           "tray icon delete of 500",
                           "delete object 600",
                           "delete object 700",
                           "delete object 801",
                           "delete object 802",
                           "delete object 803",
                           "delete object 804",
                           "delete object 805",
                           "delete object 806",
                           "delete object 807",
                           "delete object 808",
                           "destroy icon 900",
                           "release mutex",
                           "close mutex",
                           "quit 0",
                       }));
}

TEST_F(WindowLifetime, ReleasedHandlesAreCleared) {
    CreateAllResources();
    OnDestroy();
    EXPECT_EQ(g_app.logoBitmap, nullptr);
    EXPECT_EQ(g_app.backgroundBrush, nullptr);
    for (HFONT font : g_app.fonts)
        EXPECT_EQ(font, nullptr);
    EXPECT_EQ(g_app.headerIcon, nullptr);
    EXPECT_EQ(g_app.singleInstanceMutex, nullptr);
    EXPECT_EQ(g_app.mainWindow, nullptr);
}

TEST_F(WindowLifetime, TheEndAnnouncesThatThePopupIsHidden) {
    g_announcedHidden = false;
    OnDestroy();
    EXPECT_TRUE(g_announcedHidden);
}

TEST_F(WindowLifetime, TheProgramsReferenceToTheAccessibleObjectIsReleased) {
    IAccessible* object = CreateAccessibleObject();
    object->AddRef();
    g_app.accessibleObject = object;
    OnDestroy();
    EXPECT_EQ(g_app.accessibleObject, nullptr);
    EXPECT_EQ(object->Release(), 0U) << "a client's reference is the last one";
}

TEST_F(WindowLifetime, ASecondDestructionFreesNothingAgain) {
    CreateAllResources();
    OnDestroy();
    OnDestroy();
    for (const char* call : {"delete object 600", "delete object 700", "delete object 801",
                             "delete object 808", "destroy icon 900", "release mutex", "close mutex"}) {
        EXPECT_EQ(TimesCalled(call), 1) << call;
    }
}

TEST_F(WindowLifetime, ResourcesThatWereNeverCreatedAreNotFreed) {
    OnDestroy();
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 4", "kill timer 5", "kill timer 6", "pwm release at the end",
                                   "pwm wait for release 1000", "release cursor copies", "identity ramp",
                                   "pwm wait for release 25000", "shut magnification down",
                                   "tray icon delete of 0", "quit 0"}));
}

TEST_F(WindowLifetime, AReleaseThatIsUnderWayEndsBeforeTheScreenIsRestored) {
    g_releaseDuration = 900;
    OnDestroy();
    EXPECT_EQ(CallsFrom("pwm wait"),
              (CallRecord{"pwm wait for release 1000", "release cursor copies", "identity ramp",
                          "pwm wait for release 24100", "shut magnification down", "tray icon delete of 0",
                          "quit 0"}));
}

TEST_F(WindowLifetime, TheEndOfTheSessionStopsTheTimersAndRestoresBacklightCursorsAndRamp) {
    CreateAllResources();
    g_releaseDuration = 300;
    OnEndSession(true, 0x80000000);  // ENDSESSION_LOGOFF
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 2", "kill timer 4", "kill timer 5",
                                   "pwm start release at the end", "pwm wait for release 1000",
                                   "release cursor copies", "identity ramp", "pwm wait for release 3700"}));
}

TEST_F(WindowLifetime, AtTheSessionsEndTheScreenWaitsOneSecondForTheDisplaysAndWindowsFour) {
    g_releaseDuration = 60000;
    const std::uint64_t start = g_tick;
    OnEndSession(true, 0x80000000);
    EXPECT_EQ(CallsFrom("pwm wait"), (CallRecord{"pwm wait for release 1000", "release cursor copies",
                                                 "identity ramp", "pwm wait for release 3000"}));
    EXPECT_EQ(g_tick - start, 4000U);
}

TEST_F(WindowLifetime, WithoutAThreadTheLockIsReleasedAfterTheScreen) {
    g_noThreadForRelease = true;
    OnEndSession(true, 0);
    EXPECT_EQ(CallsFrom("identity ramp"),
              (CallRecord{"identity ramp", "pwm wait for release 4000", "pwm release at the end"}));
}

// ENDSESSION_CLOSEAPP: the session continues, and the installer waits up to 30 s for the program to end.
TEST_F(WindowLifetime, AnInstallerThatNeedsTheProgramsFileWaitsLongerAndMakesTheWindowDestroyed) {
    CreateAllResources();
    g_releaseDuration = 60000;
    const std::uint64_t start = g_tick;
    OnEndSession(true, 1);
    EXPECT_EQ(g_calls,
              (CallRecord{"kill timer 2", "kill timer 4", "kill timer 5", "pwm start release at the end",
                          "pwm wait for release 1000", "release cursor copies", "identity ramp",
                          "pwm wait for release 24000", "destroy window"}));
    EXPECT_EQ(g_tick - start, 25000U);
}

TEST_F(WindowLifetime, AWindowThatCannotBeDestroyedEndsTheProgramAnyway) {
    g_destructionFails = true;
    DestroyMainWindow();
    EXPECT_EQ(g_calls.front(), "destroy window");
    EXPECT_EQ(CallsFrom("release cursor copies"),
              (CallRecord{"release cursor copies", "identity ramp", "pwm wait for release 25000",
                          "shut magnification down", "tray icon delete of 0", "quit 0"}));
    EXPECT_TRUE(g_app.windowDestroyed);
    g_calls.clear();
    g_destructionFails = false;
    g_app.mainWindow = kWindow;
    g_app.windowDestroyed = false;
    DestroyMainWindow();
    EXPECT_EQ(g_calls, (CallRecord{"destroy window"})) << "WM_DESTROY performs the steps";
}

// The installer waits for the process to exit, and nothing else would end it.
TEST_F(WindowLifetime, AnInstallerEndsTheProgramEvenIfTheWindowCannotBeDestroyed) {
    g_destructionFails = true;
    OnEndSession(true, 1);
    EXPECT_EQ(CallsFrom("destroy window"),
              (CallRecord{"destroy window", "kill timer 4", "kill timer 5", "kill timer 6",
                          "pwm release at the end", "pwm wait for release 0", "release cursor copies",
                          "identity ramp", "shut magnification down", "tray icon delete of 0", "quit 0"}));
    EXPECT_TRUE(g_app.windowDestroyed);
}

TEST_F(WindowLifetime, TheWindowsEndRetriesWhatACancelledSessionEndCouldNotRestore) {
    g_releasesCollected = 0;
    OnDestroy();
    EXPECT_EQ(g_releasesCollected, 1);
}

TEST_F(WindowLifetime, TheSessionEndDropsTheActionsOfAssistiveTechnology) {
    g_app.accessibleActions.count = 2;
    OnEndSession(false, 0);
    EXPECT_EQ(g_app.accessibleActions.count, 2);
    OnEndSession(true, 0);
    EXPECT_EQ(g_app.accessibleActions.count, 0);
}

TEST_F(WindowLifetime, AfterTheSessionEndTheWindowsEndLeavesTheReleaseAlone) {
    g_releasesCollected = 0;
    OnEndSession(true, 1);
    OnDestroy();
    EXPECT_EQ(g_releasesCollected, 0);
}

TEST_F(WindowLifetime, TheWindowThatAnInstallerHasDestroyedWaitsNoLonger) {
    g_releaseDuration = 60000;
    OnEndSession(true, 1);
    g_calls.clear();
    const std::uint64_t start = g_tick;
    OnDestroy();
    EXPECT_EQ(g_tick, start);
}

// The session ends while the destruction of the window waits for a panel.
TEST_F(WindowLifetime, AWindowThatIsBeingDestroyedIsNotDestroyedAgain) {
    OnDestroy();
    g_calls.clear();
    OnEndSession(true, 1);
    EXPECT_EQ(TimesCalled("destroy window"), 0);
}

TEST_F(WindowLifetime, ASessionThatGoesOnHasTheDisplaysSettle) {
    OnEndSession(true, 0);
    g_calls.clear();
    ContinueSession();
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 2", "set timer 2 300"}));
    EXPECT_FALSE(g_app.ending);
    ContinueSession();
    EXPECT_EQ(g_calls.size(), 2U) << "only once";
}

TEST_F(WindowLifetime, TheDestructionOfTheWindowCannotBeCancelled) {
    OnDestroy();
    g_calls.clear();
    ContinueSession();
    EXPECT_TRUE(g_app.ending);
    EXPECT_TRUE(g_calls.empty());
}

// The operation must stop, and it checks `ending` only once the displays have answered.
TEST_F(WindowLifetime, ASessionDoesNotContinueDuringAnOperationOnTheDisplays) {
    g_app.pwmOperationRunning = true;
    OnEndSession(true, 0);
    ContinueSession();
    EXPECT_TRUE(g_app.ending);
    g_app.pwmOperationRunning = false;
    ContinueSession();
    EXPECT_FALSE(g_app.ending);
}

TEST_F(WindowLifetime, ACancelledSessionEndChangesNothing) {
    CreateAllResources();
    g_app.dragSlider = Slider::Brightness;
    g_app.filterOn = true;
    OnEndSession(false, 1);
    EXPECT_TRUE(g_calls.empty());
    EXPECT_TRUE(g_app.filterOn);
    EXPECT_FALSE(g_app.ending);
    EXPECT_EQ(g_app.dragSlider, Slider::Brightness);
}
