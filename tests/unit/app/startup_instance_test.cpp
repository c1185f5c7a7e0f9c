#include <gtest/gtest.h>

#include "app/startup_fakes.h"
#include "app/state/app_state.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_log_file);

namespace {

class StartupInstance : public testing::Test {
protected:
    void SetUp() override { ResetSystem(); }

    static CallRecord CallsFromTheMutexOn() {
        auto from = g_calls.begin();
        while (from != g_calls.end() && !from->starts_with("create mutex"))
            ++from;
        return CallRecord(from, g_calls.end());
    }
};

}  // namespace

TEST_F(StartupInstance, ASecondInstanceSignalsTheFirstAndExitsWith0) {
    g_system.mutexError = ERROR_ALREADY_EXISTS;
    g_system.firstInstancesWindow = MakeHandle<HWND>(321);
    g_system.quitCode = 9;
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(CallsFromTheMutexOn(),
              (CallRecord{"create mutex Global\\Ambrel2SingleInstance", "find window Ambrel2Class Ambrel",
                          "allow 4242", "post 321 32873 0 0", "co uninitialize"}));
}

TEST_F(StartupInstance, ASecondInstanceThatFindsNoWindowExitsWith0) {
    g_system.mutexError = ERROR_ALREADY_EXISTS;
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(CallsFromTheMutexOn(), (CallRecord{"create mutex Global\\Ambrel2SingleInstance",
                                                 "find window Ambrel2Class Ambrel", "co uninitialize"}));
}

TEST_F(StartupInstance, AMutexOfAnotherUserIsTreatedAsHeld) {
    g_system.mutexCreated = false;
    g_system.mutexError = ERROR_ACCESS_DENIED;
    g_system.firstInstancesWindow = MakeHandle<HWND>(321);
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(CallsFromTheMutexOn(),
              (CallRecord{"create mutex Global\\Ambrel2SingleInstance", "find window Ambrel2Class Ambrel",
                          "allow 4242", "post 321 32873 0 0", "co uninitialize"}));
}

TEST_F(StartupInstance, WithoutAMutexForAnyOtherReasonTheProgramStarts) {
    g_system.mutexCreated = false;
    g_system.mutexError = ERROR_NOT_ENOUGH_MEMORY;
    EXPECT_EQ(Start(), 0);
    EXPECT_TRUE(CallsStarting("find window").empty());
    EXPECT_EQ(CallsStarting("add tray icon").size(), 1U);
    EXPECT_EQ(g_app.singleInstanceMutex, nullptr);
}

TEST_F(StartupInstance, ASecondInstanceOpensNoLogFileAndShowsNothing) {
    g_system.mutexError = ERROR_ALREADY_EXISTS;
    Start();
    for (const char* call : {"open log", "load settings", "register class", "create window", "add tray icon",
                             "show window", "box", "brush", "font", "read gamma range",
                             "repair autostart entry", "reset cursors", "init magnification"}) {
        EXPECT_TRUE(CallsStarting(call).empty()) << call;
    }
}
