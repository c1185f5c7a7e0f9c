#include "app/crash_guard.h"

#include <gtest/gtest.h>

#include <functional>

#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/screen_ramp.h"
#include "store/event_log.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "win32/abnormal_end.h"

namespace {

LPTOP_LEVEL_EXCEPTION_FILTER g_filter = nullptr;
AbnormalEndHandler g_abnormalEnd = nullptr;
std::function<void()> g_duringRestore;  // once

LPTOP_LEVEL_EXCEPTION_FILTER WINAPI FakeSetUnhandledExceptionFilter(LPTOP_LEVEL_EXCEPTION_FILTER filter) {
    g_filter = filter;
    return nullptr;
}

BOOL WINAPI FakeSetThreadStackGuarantee(ULONG* bytes) {
    Record("reserve ", *bytes, " bytes of stack");
    *bytes = 0;
    return TRUE;
}

void Restore(const char* what) {
    Record(what);
    if (const std::function<void()> fault = std::exchange(g_duringRestore, nullptr)) fault();
}

LONG Raise(DWORD code, const void* address) {
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = code;
    record.ExceptionAddress = const_cast<void*>(address);
    CONTEXT context = {};
    EXCEPTION_POINTERS exception = {&record, &context};
    return g_filter(&exception);
}

// An address of this program.
const void* OwnAddress() {
    return reinterpret_cast<const char*>(GetModuleHandleW(nullptr)) + 0x1234;
}

std::string OwnName() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::string narrow = Narrow(path);
    return narrow.substr(narrow.rfind('\\') + 1);
}

class CrashGuard : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_duringRestore = nullptr;
        g_calls.clear();
        InstallCrashGuard();
    }
    void TearDown() override { SetAbnormalEndHandler(nullptr); }
};

}  // namespace

AMBREL_SEAM(SetUnhandledExceptionFilter, FakeSetUnhandledExceptionFilter);
AMBREL_SEAM(SetThreadStackGuarantee, FakeSetThreadStackGuarantee);

AMBREL_REPLACE(bool, LoadIdentityRamp, ()) {
    Restore("identity ramp");
    return true;
}
AMBREL_REPLACE(void, ResetSystemCursors, ()) {
    Restore("reset cursors");
}
AMBREL_REPLACE(void, LogInCrash, (const wchar_t* message)) {
    Record("log: ", Narrow(message));
}
AMBREL_REPLACE(void, SetAbnormalEndHandler, (AbnormalEndHandler handler)) {
    g_abnormalEnd = handler;
}

TEST_F(CrashGuard, InstallingItReserves64KilobytesOfStack) {
    EXPECT_EQ(g_calls, (CallRecord{"reserve 65536 bytes of stack"}));
}

TEST_F(CrashGuard, AnUnhandledExceptionRestoresTheRampThenTheCursorsThenLogsOneLine) {
    g_app.rampApplied = true;
    g_calls.clear();
    EXPECT_EQ(Raise(0xC0000005, OwnAddress()), EXCEPTION_CONTINUE_SEARCH);
    EXPECT_EQ(g_calls, (CallRecord{"identity ramp", "reset cursors",
                                   "log: Crashed: exception C0000005 at " + OwnName() + "+1234"}));
}

TEST_F(CrashGuard, WithoutARampOfTheFilterTheRampIsLeftAlone) {
    g_calls.clear();
    Raise(0xC000001D, OwnAddress());
    EXPECT_EQ(g_calls,
              (CallRecord{"reset cursors", "log: Crashed: exception C000001D at " + OwnName() + "+1234"}));
}

TEST_F(CrashGuard, ARefusedRampOrCursorResetIsTriedAgainAsAtTheEndOfTheProgram) {
    for (const bool rampApplied : {true, false}) {
        SetUp();
        g_app.rampApplied = rampApplied;
        bool retries = false;
        g_duringRestore = [&] { retries = g_app.ending; };
        Raise(0xC0000005, OwnAddress());
        EXPECT_TRUE(retries) << rampApplied;
    }
}

TEST_F(CrashGuard, TheCodeHasEightDigits) {
    g_calls.clear();
    Raise(0x000000AB, OwnAddress());
    EXPECT_EQ(g_calls.back(), "log: Crashed: exception 000000AB at " + OwnName() + "+1234");
}

TEST_F(CrashGuard, AnAddressOutsideEveryModuleIsLoggedAsItIs) {
    g_calls.clear();
    Raise(0xC0000005, reinterpret_cast<const void*>(0x12C0));
    EXPECT_EQ(g_calls.back(), "log: Crashed: exception C0000005 at +12C0");
}

TEST_F(CrashGuard, AnAddressInAnotherModuleIsRelativeToThatModule) {
    const char* user32 = reinterpret_cast<const char*>(GetModuleHandleW(L"user32.dll"));
    ASSERT_NE(user32, nullptr);
    g_calls.clear();
    Raise(0xC0000005, user32 + 0x1010);
    EXPECT_EQ(g_calls.back(), "log: Crashed: exception C0000005 at user32.dll+1010");
}

TEST_F(CrashGuard, ASecondFaultDoesNothing) {
    Raise(0xC0000005, OwnAddress());
    g_calls.clear();
    EXPECT_EQ(Raise(0xC0000005, OwnAddress()), EXCEPTION_CONTINUE_SEARCH);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(CrashGuard, AFaultInTheGuardItselfDoesNotStartItAgain) {
    g_app.rampApplied = true;
    g_calls.clear();
    g_duringRestore = [] { Raise(0xC0000006, OwnAddress()); };
    Raise(0xC0000005, OwnAddress());
    EXPECT_EQ(g_calls, (CallRecord{"identity ramp", "reset cursors",
                                   "log: Crashed: exception C0000005 at " + OwnName() + "+1234"}));
}

TEST_F(CrashGuard, AnEndByTheRuntimeRestoresTheSame) {
    ASSERT_NE(g_abnormalEnd, nullptr);
    g_app.rampApplied = true;
    g_calls.clear();
    g_abnormalEnd(OwnAddress());
    EXPECT_EQ(g_calls, (CallRecord{"identity ramp", "reset cursors",
                                   "log: Crashed: exception C0000409 at " + OwnName() + "+1234"}));
}
