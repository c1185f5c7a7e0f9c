// The release at the end of a session, on a separate thread that owns the values. The displays are fakes; a
// test can block the thread before the first display.
#include "brightness/pwm_release.h"

#include "app/state/messages.h"
#include "brightness/pwm_fixture.h"
#include "support/seam.h"

#include <objbase.h>

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

constexpr DWORD kShortWait = 20;   // ms, for a thread that does not end
constexpr DWORD kMaxWait = 20000;  // ms, for a thread that ends

bool g_createThreadFails = false;
int g_threads = 0;
LONG g_posted = 0;
HANDLE g_continue = nullptr;  // an event that the thread waits for before the first display
DWORD g_settingThread = 0;    // the thread that last set a display
DWORD g_windowThread = 0;
DWORD g_apartment = 0;  // of the release thread

HANDLE WINAPI FakeCreateThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                               void* parameter, DWORD flags, DWORD* id) {
    if (g_createThreadFails) return nullptr;
    g_threads += 1;
    return Real(&CreateThread)(security, stack, start, parameter, flags, id);
}

HRESULT WINAPI FakeCoInitializeEx(void*, DWORD apartment) {
    g_apartment = apartment;
    return S_OK;
}

void WINAPI FakeCoUninitialize() {
    g_apartment = COINIT_APARTMENTTHREADED;
}

BOOL WINAPI FakePostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    EXPECT_EQ(window, MakeHandle<HWND>(0x1234));
    EXPECT_EQ(message, kMessagePwmSafeDeferred);
    EXPECT_EQ(wParam, 0U);
    EXPECT_EQ(lParam, 0);
    InterlockedIncrement(&g_posted);
    return TRUE;
}

class PwmReleaseThread : public PwmFixture {
protected:
    void SetUp() override {
        PwmFixture::SetUp();
        g_createThreadFails = false;
        g_threads = 0;
        g_posted = 0;
        g_settingThread = 0;
        g_windowThread = GetCurrentThreadId();
        g_continue = CreateEventW(nullptr, TRUE, TRUE, nullptr);
        g_displays = {{.name = L"P", .kind = TargetKind::WmiPanel}, {.name = L"A"}};
        g_whileWaiting = [](Moment moment) {
            if (moment == Moment::BeforeListing) WaitForSingleObject(g_continue, kMaxWait);
            if (moment != Moment::BeforeSet) return;
            g_settingThread = GetCurrentThreadId();
            EXPECT_TRUE(g_settingThread == g_windowThread || g_apartment == COINIT_MULTITHREADED);
        };
        StartLocked(40);
    }
    void TearDown() override {
        Finish();
        CloseHandle(g_continue);
        PwmFixture::TearDown();
    }

    static void BlockThread() { ResetEvent(g_continue); }
    static void Finish() {
        SetEvent(g_continue);
        WaitForPwmSafeRelease(kMaxWait);
        EXPECT_TRUE(FinishPwmSafeRelease());
    }

    static void ExpectReleased() {
        EXPECT_EQ(Display(L"P").percent, 40U);
        EXPECT_EQ(Display(L"A").percent, 40U);
    }
};

}  // namespace

AMBREL_SEAM(CreateThread, FakeCreateThread);
AMBREL_SEAM(CoInitializeEx, FakeCoInitializeEx);
AMBREL_SEAM(CoUninitialize, FakeCoUninitialize);
AMBREL_SEAM(PostMessageW, FakePostMessage);

TEST_F(PwmReleaseThread, RunsOnASeparateThreadInTheMultithreadedApartment) {
    EXPECT_TRUE(StartPwmSafeRelease());
    Finish();
    ExpectReleased();
    EXPECT_NE(g_settingThread, 0U);
    EXPECT_NE(g_settingThread, GetCurrentThreadId());
    EXPECT_EQ(g_threads, 1);
    EXPECT_EQ(g_apartment, COINIT_APARTMENTTHREADED) << "the apartment was not left";
}

TEST_F(PwmReleaseThread, TakesTheSavedValuesBeforeItQueriesADisplay) {
    BlockThread();
    EXPECT_TRUE(StartPwmSafeRelease());
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
    EXPECT_FALSE(FinishPwmSafeRelease());
    Finish();
    ExpectReleased();
}

TEST_F(PwmReleaseThread, AWaitEndsAtItsLimit) {
    BlockThread();
    StartPwmSafeRelease();
    const ULONGLONG start = GetTickCount64();
    WaitForPwmSafeRelease(kShortWait);
    EXPECT_LT(GetTickCount64() - start, kMaxWait / 2);
    EXPECT_FALSE(FinishPwmSafeRelease());
    EXPECT_EQ(g_posted, 0);
}

TEST_F(PwmReleaseThread, PostsItsEnd) {
    StartPwmSafeRelease();
    Finish();
    EXPECT_EQ(g_posted, 1);
}

TEST_F(PwmReleaseThread, KeepsValuesThatAreSavedDuringTheRelease) {
    BlockThread();
    StartPwmSafeRelease();
    g_app.pwmSavedBrightness[L"A"] = 70;
    g_app.pwmSavedBrightness[L"B"] = 80;
    Finish();
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 70}, {L"B", 80}}));
}

TEST_F(PwmReleaseThread, AValueThatNoDisplayAcceptedIsSavedAgainIfTheSessionContinues) {
    Display(L"P").refuses = true;
    Display(L"A").present = false;
    StartPwmSafeRelease();
    WaitForPwmSafeRelease(kMaxWait);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty()) << "before it is collected";
    EXPECT_TRUE(FinishPwmSafeRelease());
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"P", 40}}));
}

TEST_F(PwmReleaseThread, ARefusedValueIsDroppedIfTheModeWasSwitchedOff) {
    Display(L"P").refuses = true;
    StartPwmSafeRelease();
    WaitForPwmSafeRelease(kMaxWait);
    g_app.pwmSafe = false;
    EXPECT_TRUE(FinishPwmSafeRelease());
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
}

TEST_F(PwmReleaseThread, EachValueIsRestoredOnce) {
    StartPwmSafeRelease();
    EXPECT_TRUE(StartPwmSafeRelease());
    ReleasePwmSafeLock();
    Finish();
    EXPECT_TRUE(StartPwmSafeRelease());
    ReleasePwmSafeLock();
    EXPECT_EQ(g_threads, 1);
    EXPECT_EQ(g_sets.size(), 2U);
}

TEST_F(PwmReleaseThread, ASecondReleaseRetriesTheValuesThatTheFirstCouldNotRestore) {
    Display(L"P").refuses = true;
    StartPwmSafeRelease();
    WaitForPwmSafeRelease(kMaxWait);
    Display(L"P").refuses = false;
    g_sets.clear();
    EXPECT_TRUE(StartPwmSafeRelease());
    Finish();
    ExpectReleased();
    EXPECT_EQ(g_sets.size(), 1U);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
}

TEST_F(PwmReleaseThread, NoSecondThreadIsStartedWhileTheFirstIsRunning) {
    BlockThread();
    StartPwmSafeRelease();
    g_app.pwmSavedBrightness[L"B"] = 70;
    EXPECT_TRUE(StartPwmSafeRelease());
    EXPECT_EQ(g_threads, 1);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"B", 70}}));
}

TEST_F(PwmReleaseThread, TheValuesAreKeptIfNoThreadCanBeCreated) {
    g_createThreadFails = true;
    EXPECT_FALSE(StartPwmSafeRelease());
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"P", 40}}));
    EXPECT_TRUE(FinishPwmSafeRelease());
}

TEST_F(PwmReleaseThread, NoThreadIsStartedWithoutSavedValues) {
    g_app.pwmSavedBrightness.clear();
    EXPECT_TRUE(During([] { EXPECT_TRUE(StartPwmSafeRelease()); }).empty());
    EXPECT_EQ(g_threads, 0);
    WaitForPwmSafeRelease(kMaxWait);
}

// The end of the session is cancelled while the release is running.

TEST_F(PwmReleaseThread, NoDisplayIsLockedDuringTheRelease) {
    BlockThread();
    StartPwmSafeRelease();
    RefreshPwmSafeTargets(true);
    ReassertPwmSafeAfterChange();
    PerformDeferredPwmRequest();
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty()) << "100 would be saved as the user's value";
    EXPECT_EQ(g_app.pwmDeferred, PwmRequest::Reassert);
    Finish();
    PerformDeferredPwmRequest();
    EXPECT_EQ(Display(L"A").percent, 100U);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"P", 40}}));
}

TEST_F(PwmReleaseThread, AClickOnTheCardIsDeferredUntilItEnds) {
    BlockThread();
    StartPwmSafeRelease();
    ReassertPwmSafeAfterChange();
    TogglePwmSafeByUser();
    ReassertPwmSafeAfterChange();
    EXPECT_TRUE(g_app.pwmSafe);
    EXPECT_EQ(g_app.pwmDeferred, PwmRequest::SwitchOff);
    Finish();
    PerformDeferredPwmRequest();
    EXPECT_FALSE(g_app.pwmSafe);
    ExpectReleased();
    EXPECT_EQ(g_sets.size(), 2U);
}

TEST_F(PwmReleaseThread, SuspendingStopsTheTimersAndDropsTheDeferredRequest) {
    g_app.pwmVerifyPending = true;
    g_app.pwmVerifyIsUserToggle = true;
    g_app.pwmDeferred = PwmRequest::SwitchOff;
    EXPECT_EQ(During([] { SuspendPwmSafe(); }), (CallRecord{"kill timer 4", "kill timer 5"}));
    EXPECT_EQ(Flags(), "on");
    EXPECT_EQ(g_app.pwmDeferred, PwmRequest::None);
}
