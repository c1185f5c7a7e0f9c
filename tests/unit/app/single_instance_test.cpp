#include "app/single_instance.h"

#include <gtest/gtest.h>

#include <string>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

namespace {

HANDLE const kMutex = MakeHandle<HANDLE>(0x5005);
HWND const kFirstWindow = MakeHandle<HWND>(500);

HANDLE g_mutex = nullptr;
DWORD g_mutexError = 0;
HWND g_foundWindow = nullptr;
DWORD g_process = 0;

HANDLE WINAPI FakeCreateMutex(SECURITY_ATTRIBUTES* security, BOOL owned, const wchar_t* name) {
    EXPECT_EQ(security, nullptr);
    EXPECT_TRUE(owned);
    Record("create mutex ", Narrow(name));
    SetLastError(g_mutexError);
    return g_mutex;
}

HWND WINAPI FakeFindWindow(const wchar_t* className, const wchar_t* title) {
    Record("find ", Narrow(className), " ", Narrow(title));
    return g_foundWindow;
}

DWORD WINAPI FakeGetWindowThreadProcessId(HWND window, DWORD* process) {
    EXPECT_EQ(window, kFirstWindow);
    if (g_process != 0) *process = g_process;
    return 1;
}

BOOL WINAPI FakeAllowSetForegroundWindow(DWORD process) {
    Record("allow ", process);
    return TRUE;
}

BOOL WINAPI FakePostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Record("post ", ValueOf(window), " ", message, " ", wParam, " ", lParam);
    return TRUE;
}

BOOL WINAPI FakeReleaseMutex(HANDLE mutex) {
    Record("release ", ValueOf(mutex));
    return TRUE;
}

BOOL WINAPI FakeCloseHandle(HANDLE handle) {
    if (handle == kMutex) {
        Record("close ", ValueOf(handle));
        return TRUE;
    }
    return Real(&CloseHandle)(handle);
}

class SingleInstance : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_calls.clear();
        g_foundWindow = nullptr;
        g_process = 0;
    }

    static bool ClaimWith(HANDLE mutex, DWORD error) {
        g_mutex = mutex;
        g_mutexError = error;
        return ClaimSingleInstance();
    }
};

}  // namespace

AMBREL_SEAM(CreateMutexW, FakeCreateMutex);
AMBREL_SEAM(FindWindowW, FakeFindWindow);
AMBREL_SEAM(GetWindowThreadProcessId, FakeGetWindowThreadProcessId);
AMBREL_SEAM(AllowSetForegroundWindow, FakeAllowSetForegroundWindow);
AMBREL_SEAM(PostMessageW, FakePostMessage);
AMBREL_SEAM(ReleaseMutex, FakeReleaseMutex);
AMBREL_SEAM(CloseHandle, FakeCloseHandle);

TEST_F(SingleInstance, TheFirstInstanceOwnsAndStoresTheMutex) {
    EXPECT_TRUE(ClaimWith(kMutex, ERROR_SUCCESS));
    EXPECT_EQ(g_calls, (CallRecord{"create mutex Global\\Ambrel2SingleInstance"}));
    EXPECT_EQ(g_app.singleInstanceMutex, kMutex);
}

TEST_F(SingleInstance, AMutexThatExistsMakesThisTheSecondInstance) {
    EXPECT_FALSE(ClaimWith(kMutex, ERROR_ALREADY_EXISTS));
}

TEST_F(SingleInstance, AMutexOfAnotherUserIsTreatedAsHeld) {
    EXPECT_FALSE(ClaimWith(nullptr, ERROR_ACCESS_DENIED));
}

TEST_F(SingleInstance, AnyOtherFailureLetsTheProgramStart) {
    EXPECT_TRUE(ClaimWith(nullptr, ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_TRUE(ClaimWith(nullptr, ERROR_INVALID_HANDLE));
    EXPECT_TRUE(ClaimWith(nullptr, ERROR_PATH_NOT_FOUND));
}

TEST_F(SingleInstance, TheFirstInstanceMayTakeTheForegroundAndIsSentTheShowMessage) {
    g_foundWindow = kFirstWindow;
    g_process = 4242;
    SignalFirstInstance();
    EXPECT_EQ(g_calls, (CallRecord{"find Ambrel2Class Ambrel", "allow 4242", "post 500 32873 0 0"}));
}

TEST_F(SingleInstance, WithoutAProcessIdAnyProcessMayTakeTheForeground) {
    g_foundWindow = kFirstWindow;
    SignalFirstInstance();
    EXPECT_EQ(g_calls, (CallRecord{"find Ambrel2Class Ambrel", "allow 4294967295", "post 500 32873 0 0"}));
}

TEST_F(SingleInstance, WithoutAWindowNoMessageIsPosted) {
    SignalFirstInstance();
    EXPECT_EQ(g_calls, (CallRecord{"find Ambrel2Class Ambrel"}));
}

TEST_F(SingleInstance, TheMutexIsReleasedBeforeItIsClosedAndOnlyOnce) {
    g_app.singleInstanceMutex = kMutex;
    ReleaseSingleInstance();
    ReleaseSingleInstance();
    EXPECT_EQ(g_calls, (CallRecord{"release 20485", "close 20485"}));
    EXPECT_EQ(g_app.singleInstanceMutex, nullptr);
}

TEST_F(SingleInstance, WithoutAMutexNothingIsReleased) {
    ReleaseSingleInstance();
    EXPECT_TRUE(g_calls.empty());
}
