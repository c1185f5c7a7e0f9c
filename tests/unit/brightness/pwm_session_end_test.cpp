// The release in WM_ENDSESSION. Out of a message that another process sends COM does not call out, so then it
// is the work of a thread of its own.
#include "brightness/pwm_bench.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

DWORD g_sending = ISMEX_NOSEND;
bool g_threadRefused = false;
int g_threads = 0;
HANDLE g_thread = nullptr;  // a handle of the test's own
DWORD g_setOn = 0;          // the thread that a display was set on

DWORD WINAPI FakeInSendMessageEx(void*) {
    return g_sending;
}

HANDLE WINAPI FakeCreateThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                               void* parameter, DWORD flags, DWORD* id) {
    if (g_threadRefused) return nullptr;
    g_threads += 1;
    HANDLE thread = Real(&CreateThread)(security, stack, start, parameter, flags, id);
    DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &g_thread, SYNCHRONIZE, FALSE, 0);
    return thread;
}

class PwmSessionEnd : public PwmBench {
protected:
    void SetUp() override {
        PwmBench::SetUp();
        g_sending = ISMEX_NOSEND;
        g_threadRefused = false;
        g_threads = 0;
        g_setOn = 0;
        g_displays = {{.name = L"P", .kind = TargetKind::WmiPanel}};
        g_app.ending = true;
        g_whileWaiting = [](Moment moment) {
            if (moment == Moment::BeforeSet) g_setOn = GetCurrentThreadId();
        };
    }

    static void ExpectRestored() {
        EXPECT_EQ(Display(L"P").percent, 40U);
        EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
    }
};

}  // namespace

AMBREL_SEAM(InSendMessageEx, FakeInSendMessageEx);
AMBREL_SEAM(CreateThread, FakeCreateThread);

TEST_F(PwmSessionEnd, OutOfAMessageOfThisThreadItIsTheRelease) {
    StartLocked(40);
    ReleasePwmSafeLockAtSessionEnd();
    ExpectRestored();
    EXPECT_EQ(g_setOn, GetCurrentThreadId());
    EXPECT_EQ(g_threads, 0);
}

TEST_F(PwmSessionEnd, OutOfASentMessageItIsDoneByAThreadThatHasEndedWhenItReturns) {
    g_sending = ISMEX_SEND;
    StartLocked(40);
    ReleasePwmSafeLockAtSessionEnd();
    ExpectRestored();
    EXPECT_NE(g_setOn, 0U);
    EXPECT_NE(g_setOn, GetCurrentThreadId());
    EXPECT_EQ(g_threads, 1);
    ASSERT_NE(g_thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(g_thread, 0), WAIT_OBJECT_0);
    CloseHandle(g_thread);
}

TEST_F(PwmSessionEnd, WithoutAThreadItIsTriedOnThisOne) {
    g_sending = ISMEX_SEND;
    g_threadRefused = true;
    StartLocked(40);
    ReleasePwmSafeLockAtSessionEnd();
    ExpectRestored();
}

TEST_F(PwmSessionEnd, WithNothingToGiveBackNothingIsStarted) {
    g_sending = ISMEX_SEND;
    EXPECT_TRUE(During([] { ReleasePwmSafeLockAtSessionEnd(); }).empty());
    EXPECT_EQ(g_threads, 0);
}
