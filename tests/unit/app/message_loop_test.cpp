// A message loop whose calls to Windows fail, or that another program ends.
#include <gtest/gtest.h>

#include "app/startup_fakes.h"
#include "app/state/app_state.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_log_file);

namespace {

constexpr char kGaveUpLine[] = "log: No messages from Windows after 10 attempts - ending";

class MessageLoop : public testing::Test {
protected:
    void SetUp() override { ResetSystem(); }
};

}  // namespace

TEST_F(MessageLoop, AFailureForAMomentLosesNoMessage) {
    g_system.messages.push_back({kWindow, WM_NULL, 0, 0, 0, {}});
    g_system.failingReads = 9;
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(CallsStarting("dispatch").size(), 1U);
    EXPECT_TRUE(CallsStarting("destroy window").empty());
    EXPECT_TRUE(CallsStarting(kGaveUpLine).empty());
}

TEST_F(MessageLoop, FailuresAreCountedInARow) {
    for (int i = 0; i < 20; ++i)
        g_system.messages.push_back({kWindow, WM_NULL, 0, 0, 0, {}});
    g_system.everyOtherReadFails = true;
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(CallsStarting("dispatch").size(), 20U);
}

TEST_F(MessageLoop, AfterTenFailuresInARowTheWindowIsDestroyedAndTheProgramEnds) {
    g_system.failingReads = 1000000;
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(g_system.reads, 10);
    EXPECT_EQ(CallsStarting("destroy window"), (CallRecord{"destroy window 500"}));
    EXPECT_TRUE(IsBefore(kGaveUpLine, "destroy window"));
    EXPECT_TRUE(IsBefore("destroy window", "co uninitialize"));
}

TEST_F(MessageLoop, AQuitMessageOfAnotherProgramDestroysTheWindowAndGivesTheExitCode) {
    g_system.otherProgramQuits = true;
    g_system.quitCode = 7;
    EXPECT_EQ(Start(), 7);
    EXPECT_EQ(CallsStarting("destroy window"), (CallRecord{"destroy window 500"}));
    EXPECT_TRUE(IsBefore("quit message", "destroy window"));
    EXPECT_TRUE(IsBefore("destroy window", "co uninitialize"));
}
