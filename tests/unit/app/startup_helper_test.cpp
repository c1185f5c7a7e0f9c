// The elevated run that expands the gamma range. The command line selects it before anything else happens.
#include <gtest/gtest.h>

#include "app/startup_fakes.h"
#include "app/state/app_state.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_log_file);

namespace {

class StartupHelper : public testing::Test {
protected:
    void SetUp() override { ResetSystem(); }

    // The calls of a start with this command line; "ordinary start" replaces those of an ordinary start.
    static CallRecord CallsOfStarting(const wchar_t* commandLine) {
        ResetSystem();
        Start(commandLine);
        return CallsStarting("show window").empty() ? g_calls : CallRecord{"ordinary start"};
    }
};

const CallRecord kHelperOnly = {"helper"};
const CallRecord kOrdinary = {"ordinary start"};

}  // namespace

TEST_F(StartupHelper, TheSwitchRunsTheHelperAndNothingElse) {
    EXPECT_EQ(CallsOfStarting(L"\"C:\\Tools\\ambrel.exe\" --expand-gamma-range"), kHelperOnly);
    EXPECT_EQ(g_app.startTick, 0U);
    EXPECT_EQ(g_app.instance, nullptr);
    EXPECT_EQ(g_app.singleInstanceMutex, nullptr);
    EXPECT_EQ(g_app.taskbarCreatedMessage, 0U);
    EXPECT_TRUE(g_app.settingsPath.empty());
}

TEST_F(StartupHelper, TheHelpersResultIsTheExitCode) {
    g_system.helperExitCode = 0;
    EXPECT_EQ(Start(L"ambrel.exe --expand-gamma-range"), 0);
    g_system.helperExitCode = 1;
    EXPECT_EQ(Start(L"ambrel.exe --expand-gamma-range"), 1);
}

TEST_F(StartupHelper, TheHelperRunsWhileAFirstInstanceIsRunning) {
    g_system.mutexError = ERROR_ALREADY_EXISTS;
    g_system.firstInstancesWindow = MakeHandle<HWND>(321);
    g_system.helperExitCode = 1;
    EXPECT_EQ(Start(L"ambrel.exe --expand-gamma-range"), 1);
    EXPECT_EQ(g_calls, kHelperOnly);
}

TEST_F(StartupHelper, TheSwitchIsRecognisedAnywhereInTheCommandLine) {
    EXPECT_EQ(CallsOfStarting(L"--expand-gamma-range"), kHelperOnly);
    EXPECT_EQ(CallsOfStarting(L"ambrel.exe /a --expand-gamma-range /b"), kHelperOnly);
    EXPECT_EQ(CallsOfStarting(L"ambrel.exe \"x--expand-gamma-range=now\""), kHelperOnly);
    EXPECT_EQ(CallsOfStarting(L"ambrel.exe --expand-gamma-ranges"), kHelperOnly);
}

TEST_F(StartupHelper, AnyOtherCommandLineStartsTheProgram) {
    for (const wchar_t* commandLine :
         {L"", L"ambrel.exe", L"ambrel.exe --EXPAND-GAMMA-RANGE", L"ambrel.exe -expand-gamma-range",
          L"ambrel.exe --expand-gamma-rang", L"ambrel.exe --expand gamma range"}) {
        EXPECT_EQ(CallsOfStarting(commandLine), kOrdinary) << testing::PrintToString(commandLine);
    }
}
