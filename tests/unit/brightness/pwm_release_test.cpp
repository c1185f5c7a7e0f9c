// The release at a session's end: on a thread of its own, on values that it has taken over. The displays are
// the fakes; a test can hold the thread in front of a display for as long as it likes.
#include "brightness/pwm_release.h"

#include "app/state/messages.h"
#include "brightness/pwm_bench.h"
#include "support/seam.h"

#include <objbase.h>

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

constexpr DWORD kSoon = 20;        // ms: the thread is not expected
constexpr DWORD kLongest = 20000;  // ms: the thread is

bool g_threadRefused = false;
int g_threads = 0;
LONG g_posted = 0;
HANDLE g_goOn = nullptr;  // an event: what the thread waits for in front of the first display
DWORD g_setOn = 0;        // the thread that a display was set on
DWORD g_windowThread = 0;
DWORD g_apartment = 0;  // that the release's thread is in

HANDLE WINAPI FakeCreateThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                               void* parameter, DWORD flags, DWORD* id) {
    if (g_threadRefused) return nullptr;
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

class PwmReleaseThread : public PwmBench {
protected:
    void SetUp() override {
        PwmBench::SetUp();
        g_threadRefused = false;
        g_threads = 0;
        g_posted = 0;
        g_setOn = 0;
        g_windowThread = GetCurrentThreadId();
        g_goOn = CreateEventW(nullptr, TRUE, TRUE, nullptr);
        g_displays = {{.name = L"P", .kind = TargetKind::WmiPanel}, {.name = L"A"}};
        g_whileWaiting = [](Moment moment) {
            if (moment == Moment::BeforeListing) WaitForSingleObject(g_goOn, kLongest);
            if (moment != Moment::BeforeSet) return;
            g_setOn = GetCurrentThreadId();
            EXPECT_TRUE(g_setOn == g_windowThread || g_apartment == COINIT_MULTITHREADED);
        };
        StartLocked(40);
    }
    void TearDown() override {
        Finish();
        CloseHandle(g_goOn);
        PwmBench::TearDown();
    }

    static void HoldTheThread() { ResetEvent(g_goOn); }
    static void Finish() {
        SetEvent(g_goOn);
        WaitForPwmSafeRelease(kLongest);
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

TEST_F(PwmReleaseThread, RunsOnAThreadOfItsOwnInTheMultithreadedApartment) {
    EXPECT_TRUE(StartPwmSafeRelease());
    Finish();
    ExpectReleased();
    EXPECT_NE(g_setOn, 0U);
    EXPECT_NE(g_setOn, GetCurrentThreadId());
    EXPECT_EQ(g_threads, 1);
    EXPECT_EQ(g_apartment, COINIT_APARTMENTTHREADED) << "the apartment was not left";
}

TEST_F(PwmReleaseThread, TakesTheSavedValuesOverBeforeItLooksAtADisplay) {
    HoldTheThread();
    EXPECT_TRUE(StartPwmSafeRelease());
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
    EXPECT_FALSE(FinishPwmSafeRelease());
    Finish();
    ExpectReleased();
}

TEST_F(PwmReleaseThread, AWaitEndsAtItsLimit) {
    HoldTheThread();
    StartPwmSafeRelease();
    const ULONGLONG start = GetTickCount64();
    WaitForPwmSafeRelease(kSoon);
    EXPECT_LT(GetTickCount64() - start, kLongest / 2);
    EXPECT_FALSE(FinishPwmSafeRelease());
    EXPECT_EQ(g_posted, 0);
}

TEST_F(PwmReleaseThread, ItsEndIsPosted) {
    StartPwmSafeRelease();
    Finish();
    EXPECT_EQ(g_posted, 1);
}

TEST_F(PwmReleaseThread, ChangesNothingInTheStateThatWasSavedMeanwhile) {
    HoldTheThread();
    StartPwmSafeRelease();
    g_app.pwmSavedBrightness[L"A"] = 70;
    g_app.pwmSavedBrightness[L"B"] = 80;
    Finish();
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 70}, {L"B", 80}}));
}

TEST_F(PwmReleaseThread, AValueThatNoDisplayAcceptedIsSavedAgainOnceTheSessionGoesOn) {
    Display(L"P").refuses = true;
    Display(L"A").present = false;
    StartPwmSafeRelease();
    WaitForPwmSafeRelease(kLongest);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty()) << "before anybody collects it";
    EXPECT_TRUE(FinishPwmSafeRelease());
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"P", 40}}));
}

TEST_F(PwmReleaseThread, NothingIsReleasedTwice) {
    StartPwmSafeRelease();
    EXPECT_TRUE(StartPwmSafeRelease());
    ReleasePwmSafeLock();
    Finish();
    EXPECT_TRUE(StartPwmSafeRelease());
    ReleasePwmSafeLock();
    EXPECT_EQ(g_threads, 1);
    EXPECT_EQ(g_sets.size(), 2U);
}

TEST_F(PwmReleaseThread, ASecondReleaseSetsWhatTheFirstCouldNot) {
    Display(L"P").refuses = true;
    StartPwmSafeRelease();
    WaitForPwmSafeRelease(kLongest);
    Display(L"P").refuses = false;
    g_sets.clear();
    EXPECT_TRUE(StartPwmSafeRelease());
    Finish();
    ExpectReleased();
    EXPECT_EQ(g_sets.size(), 1U);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
}

TEST_F(PwmReleaseThread, NoSecondThreadIsStartedWhileTheFirstIsUnderWay) {
    HoldTheThread();
    StartPwmSafeRelease();
    g_app.pwmSavedBrightness[L"B"] = 70;
    EXPECT_TRUE(StartPwmSafeRelease());
    EXPECT_EQ(g_threads, 1);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"B", 70}}));
}

TEST_F(PwmReleaseThread, WithoutAThreadTheValuesStay) {
    g_threadRefused = true;
    EXPECT_FALSE(StartPwmSafeRelease());
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"P", 40}}));
    EXPECT_TRUE(FinishPwmSafeRelease());
}

TEST_F(PwmReleaseThread, WithNothingSavedNothingIsStarted) {
    g_app.pwmSavedBrightness.clear();
    EXPECT_TRUE(During([] { EXPECT_TRUE(StartPwmSafeRelease()); }).empty());
    EXPECT_EQ(g_threads, 0);
    WaitForPwmSafeRelease(kLongest);
}

// A session that was called off while the release is under way.

TEST_F(PwmReleaseThread, NoDisplayIsLockedWhileItIsUnderWay) {
    HoldTheThread();
    StartPwmSafeRelease();
    RefreshPwmSafeTargets(true);
    ReassertPwmSafeAfterChange();
    PerformDeferredPwmRequest();
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty()) << "100 would pass for the user's value";
    EXPECT_EQ(g_app.pwmDeferred, PwmRequest::Reassert);
    Finish();
    PerformDeferredPwmRequest();
    EXPECT_EQ(Display(L"A").percent, 100U);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"P", 40}}));
}

TEST_F(PwmReleaseThread, AClickOnTheCardWaitsForItsEnd) {
    HoldTheThread();
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

TEST_F(PwmReleaseThread, AnEndSuspendsTheLockAndDropsWhatIsDeferred) {
    g_app.pwmVerifyPending = true;
    g_app.pwmVerifyIsUserToggle = true;
    g_app.pwmDeferred = PwmRequest::SwitchOff;
    EXPECT_EQ(During([] { SuspendPwmSafe(); }), (CallRecord{"kill timer 4", "kill timer 5"}));
    EXPECT_EQ(Flags(), "on");
    EXPECT_EQ(g_app.pwmDeferred, PwmRequest::None);
}
