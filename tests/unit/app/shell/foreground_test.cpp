#include "app/shell/foreground.h"

#include <gtest/gtest.h>

#include "support/call_record.h"
#include "support/seam.h"

namespace {

HWND const kPopup = MakeHandle<HWND>(500);
HWND const kOther = MakeHandle<HWND>(600);
constexpr DWORD kOtherThread = 0xFFFF0001;

// The behaviour of the fake Windows.
struct System {
    HWND foreground = kOther;
    DWORD foregroundThread = kOtherThread;
    int grantedRequest = 1;  // which SetForegroundWindow succeeds; 0: none
    int requests = 0;
    bool hung = false;
    bool timeoutReadable = true;
    DWORD timeout = 200000;
    bool attachable = true;
};

System g_system;

HWND WINAPI FakeGetForegroundWindow() {
    return g_system.foreground;
}

BOOL WINAPI FakeBringWindowToTop(HWND window) {
    Record("to top ", ValueOf(window));
    return TRUE;
}

BOOL WINAPI FakeSetForegroundWindow(HWND window) {
    Record("ask ", ValueOf(window));
    g_system.requests += 1;
    if (g_system.requests == g_system.grantedRequest) g_system.foreground = window;
    // Windows returns TRUE even if it only flashes the taskbar button, so the result proves nothing.
    return TRUE;
}

// The pointer itself is the new time-out.
BOOL WINAPI FakeSystemParametersInfo(UINT action, UINT parameter, void* value, UINT notify) {
    EXPECT_EQ(parameter, 0U);
    EXPECT_EQ(notify, 0U);
    if (action == SPI_GETFOREGROUNDLOCKTIMEOUT) {
        Record("read time-out");
        if (g_system.timeoutReadable) *static_cast<DWORD*>(value) = g_system.timeout;
        return g_system.timeoutReadable;
    }
    EXPECT_EQ(action, static_cast<UINT>(SPI_SETFOREGROUNDLOCKTIMEOUT));
    Record("set time-out ", ValueOf(value));
    return TRUE;
}

BOOL WINAPI FakeAllowSetForegroundWindow(DWORD process) {
    Record("allow ", process);
    return TRUE;
}

DWORD WINAPI FakeGetWindowThreadProcessId(HWND window, DWORD*) {
    EXPECT_EQ(window, kOther);
    return g_system.foregroundThread;
}

BOOL WINAPI FakeIsHungAppWindow(HWND window) {
    EXPECT_EQ(window, kOther);
    return g_system.hung;
}

std::string ThreadName(DWORD thread) {
    if (thread == kOtherThread) return "other";
    return thread == GetCurrentThreadId() ? "own" : "unknown";
}

BOOL WINAPI FakeAttachThreadInput(DWORD from, DWORD to, BOOL attach) {
    Record(attach ? "attach " : "detach ", ThreadName(from), " ", ThreadName(to));
    return g_system.attachable;
}

const CallRecord kCallsOfRetry = {
    "to top 500",       "ask 500",    "read time-out", "set time-out 0",   "allow 4294967295",
    "attach own other", "to top 500", "ask 500",       "detach own other", "set time-out 200000",
};
// The calls without attached input.
const CallRecord kCallsOfRetryWithoutInput = {
    "to top 500",       "ask 500",    "read time-out", "set time-out 0",
    "allow 4294967295", "to top 500", "ask 500",       "set time-out 200000",
};

class Foreground : public testing::Test {
protected:
    void SetUp() override {
        g_system = System{};
        g_calls.clear();
    }
};

}  // namespace

AMBREL_SEAM(GetForegroundWindow, FakeGetForegroundWindow);
AMBREL_SEAM(BringWindowToTop, FakeBringWindowToTop);
AMBREL_SEAM(SetForegroundWindow, FakeSetForegroundWindow);
AMBREL_SEAM(SystemParametersInfoW, FakeSystemParametersInfo);
AMBREL_SEAM(AllowSetForegroundWindow, FakeAllowSetForegroundWindow);
AMBREL_SEAM(GetWindowThreadProcessId, FakeGetWindowThreadProcessId);
AMBREL_SEAM(IsHungAppWindow, FakeIsHungAppWindow);
AMBREL_SEAM(AttachThreadInput, FakeAttachThreadInput);

TEST_F(Foreground, AnImmediateGrantChangesNothingElse) {
    EXPECT_TRUE(BringToForeground(kPopup));
    EXPECT_EQ(g_calls, (CallRecord{"to top 500", "ask 500"}));
}

TEST_F(Foreground, ARefusalIsRetriedWithoutTheLockAndWithTheInputAttached) {
    g_system.grantedRequest = 2;
    EXPECT_TRUE(BringToForeground(kPopup));
    EXPECT_EQ(g_calls, kCallsOfRetry);
}

TEST_F(Foreground, AfterASecondRefusalInputAndTimeOutAreRestored) {
    g_system.grantedRequest = 0;
    EXPECT_FALSE(BringToForeground(kPopup));
    EXPECT_EQ(g_calls, kCallsOfRetry);
}

TEST_F(Foreground, TheInputOfAHungWindowsThreadIsNotAttached) {
    g_system.hung = true;
    g_system.grantedRequest = 2;
    EXPECT_TRUE(BringToForeground(kPopup));
    EXPECT_EQ(g_calls, kCallsOfRetryWithoutInput);
}

TEST_F(Foreground, TheCurrentThreadIsNotAttachedToItself) {
    g_system.foregroundThread = GetCurrentThreadId();
    g_system.grantedRequest = 2;
    EXPECT_TRUE(BringToForeground(kPopup));
    EXPECT_EQ(g_calls, kCallsOfRetryWithoutInput);
}

TEST_F(Foreground, WithoutAForegroundWindowNoInputIsAttached) {
    g_system.foreground = nullptr;
    g_system.grantedRequest = 2;
    EXPECT_TRUE(BringToForeground(kPopup));
    EXPECT_EQ(g_calls, kCallsOfRetryWithoutInput);
}

TEST_F(Foreground, AnInputThatCouldNotBeAttachedIsNotDetached) {
    g_system.attachable = false;
    g_system.grantedRequest = 0;
    EXPECT_FALSE(BringToForeground(kPopup));
    EXPECT_EQ(g_calls,
              (CallRecord{"to top 500", "ask 500", "read time-out", "set time-out 0", "allow 4294967295",
                          "attach own other", "to top 500", "ask 500", "set time-out 200000"}));
}

TEST_F(Foreground, ATimeOutThatCannotBeReadIsLeftAlone) {
    g_system.timeoutReadable = false;
    g_system.grantedRequest = 0;
    EXPECT_FALSE(BringToForeground(kPopup));
    EXPECT_EQ(g_calls, (CallRecord{"to top 500", "ask 500", "read time-out", "allow 4294967295",
                                   "attach own other", "to top 500", "ask 500", "detach own other"}));
}

TEST_F(Foreground, ATimeOutOfZeroAndTheLargestOneAreRestoredAsTheyWere) {
    g_system.grantedRequest = 0;
    g_system.timeout = 0;
    BringToForeground(kPopup);
    EXPECT_EQ(g_calls.back(), "set time-out 0");
    g_system.timeout = 0xFFFFFFFF;
    BringToForeground(kPopup);
    EXPECT_EQ(g_calls.back(), "set time-out 4294967295");
}
