#include <gtest/gtest.h>

#include "app/startup_fakes.h"
#include "app/state/app_state.h"
#include "support/fake_libraries.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_log_file);

namespace {

class StartupDpi : public testing::Test {
protected:
    void SetUp() override { ResetSystem(); }

    // The calls between the initialisation of COM and the creation of the mutex.
    static CallRecord AwarenessCalls() {
        auto from = g_calls.begin();
        while (from != g_calls.end() && !from->starts_with("co security"))
            ++from;
        auto to = from;
        while (to != g_calls.end() && !to->starts_with("create mutex"))
            ++to;
        return from == to ? CallRecord{} : CallRecord(from + 1, to);
    }
};

}  // namespace

TEST_F(StartupDpi, AwarenessIsPerMonitor) {
    Start();
    EXPECT_EQ(AwarenessCalls(), (CallRecord{"load Shcore.dll", "set awareness 2", "free Shcore.dll"}));
}

TEST_F(StartupDpi, AwarenessThatIsAlreadySetIsKept) {
    g_system.awarenessAnswer = kAwarenessSetAlready;
    Start();
    EXPECT_EQ(AwarenessCalls(), (CallRecord{"load Shcore.dll", "set awareness 2", "free Shcore.dll"}));
}

TEST_F(StartupDpi, AnyOtherFailureFallsBackToTheOlderFunction) {
    g_system.awarenessAnswer = E_INVALIDARG;
    Start();
    EXPECT_EQ(AwarenessCalls(),
              (CallRecord{"load Shcore.dll", "set awareness 2", "set aware", "free Shcore.dll"}));
}

TEST_F(StartupDpi, WithoutShcoreTheOlderFunctionIsCalled) {
    RemoveLibraries();
    Start();
    EXPECT_EQ(AwarenessCalls(), (CallRecord{"load Shcore.dll", "set aware"}));
}

TEST_F(StartupDpi, WithoutTheFunctionTheOlderFunctionIsCalled) {
    RemoveLibraries();
    InstallLibrary(L"Shcore.dll", {});
    Start();
    EXPECT_EQ(AwarenessCalls(), (CallRecord{"load Shcore.dll", "set aware", "free Shcore.dll"}));
}

TEST_F(StartupDpi, TheStoredDpiStartsAt96) {
    g_app.dpi = 240;
    Start();
    EXPECT_EQ(CallsStarting("create window"), (CallRecord{"create window 320x540"}));
    EXPECT_EQ(CallsStarting("load icon"), (CallRecord{"load icon 103 22x22"}));
}

TEST_F(StartupDpi, AWindowOfAnotherDpiIsResizedAndTheIconReloaded) {
    g_system.windowDpi = 144;
    Start();
    EXPECT_EQ(g_app.dpi, 144U);
    EXPECT_EQ(CallsStarting("create window"), (CallRecord{"create window 320x540"}));
    EXPECT_EQ(CallsStarting("load icon"), (CallRecord{"load icon 103 22x22", "load icon 103 33x33"}));
    EXPECT_EQ(CallsStarting("destroy icon"), (CallRecord{"destroy icon 900"}));
    EXPECT_EQ(CallsStarting("resize"), (CallRecord{"resize 500 480x810"}));
    EXPECT_TRUE(IsBefore("dpi of window", "load icon 103 33x33"));
    EXPECT_TRUE(IsBefore("load icon 103 33x33", "resize"));
}

TEST_F(StartupDpi, AWindowAt192DpiIsTwiceTheSize) {
    g_system.windowDpi = 192;
    Start();
    EXPECT_EQ(CallsStarting("resize"), (CallRecord{"resize 500 640x1080"}));
}

TEST_F(StartupDpi, AWindowWhoseDpiCannotBeReadIsTreatedAs96) {
    g_system.windowDpi = 0;
    Start();
    EXPECT_EQ(g_app.dpi, 96U);
    EXPECT_EQ(CallsStarting("load icon"), (CallRecord{"load icon 103 22x22"}));
    EXPECT_EQ(CallsStarting("resize"), (CallRecord{"resize 500 320x540"}));
}

TEST_F(StartupDpi, WithoutRoundedCornersTheProgramRuns) {
    RemoveLibraries();
    InstallShcore();
    EXPECT_EQ(Start(), 0);
    EXPECT_TRUE(CallsStarting("dwm ").empty());

    ResetSystem();
    RemoveLibraries();
    InstallShcore();
    InstallLibrary(L"dwmapi.dll", {});
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(CallsStarting("free dwmapi.dll").size(), 1U);
}
