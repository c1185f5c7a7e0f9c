// The lock when the window is created, after display changes, and through long runs of failures.
#include <algorithm>

#include "brightness/pwm_fixture.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PwmRestore : public PwmFixture {
protected:
    static CallRecord Restore() {
        return During([] { RestorePwmSafeFromSettings(); });
    }
};

class PwmDisplayChange : public PwmFixture {
protected:
    static CallRecord Change() {
        return During([] { ReassertPwmSafeAfterChange(); });
    }
};

class PwmSlowing : public PwmFixture {
protected:
    void SetUp() override {
        PwmFixture::SetUp();
        g_displays = {{.name = L"A"}};
        StartLocked();
        Display(L"A").percent = 40;
        Display(L"A").ignores = true;
    }

    // The poll asserts, the verification fails.
    static CallRecord FailOnce() {
        return During([] {
            RefreshPwmSafeTargets(true);
            VerifyPwmLock();
        });
    }

    static void FailTimes(int times) {
        for (int i = 0; i < times; ++i)
            FailOnce();
    }

    static int LinesOf(const std::string& line) {
        return static_cast<int>(std::count(g_calls.begin(), g_calls.end(), "log: " + line));
    }
};

const std::string kPending = "PWM-safe: lock pending (0 of 1 at 100%) - poll will re-assert";
const std::string kSlowdownLine =
    "PWM-safe: display will not hold 100% after 10 attempts - slowing retries to 30s";

}  // namespace

TEST_F(PwmRestore, WhileOffTheDisplaysAreEnumeratedOnceAndNotPolled) {
    g_displays = {{.name = L"A", .percent = 40}};
    EXPECT_THAT(Restore(), ElementsAre("enumerate", "count", "kill timer 4"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(Label(), L"LOCK DISPLAY AT 100%");
}

TEST_F(PwmRestore, AssertsTheLockAndLogsTheNumberOfDisplays) {
    g_displays = {{.name = L"A", .percent = 40}, {.name = L"B", .percent = 60}};
    g_app.pwmSafe = true;
    EXPECT_THAT(Restore(),
                ElementsAre("enumerate", "count", "enumerate", "count", "A := 100", "B := 100",
                            "kill timer 4", "set timer 4 2000", "kill timer 5", "set timer 5 750",
                            "log: PWM-safe restored from settings: 2 target(s) visible at startup"));
    EXPECT_EQ(Flags(), "on verifying");
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"B", 60}}));
}

TEST_F(PwmRestore, WaitsForADisplayAndLogsIt) {
    g_app.pwmSafe = true;
    EXPECT_THAT(Restore(),
                ElementsAre("enumerate", "count", "enumerate", "count", "kill timer 4", "set timer 4 2000",
                            "log: PWM-safe restored from settings: 0 target(s) visible at startup "
                            "(none yet - will re-probe via poll)"));
    EXPECT_EQ(Flags(), "on");
    EXPECT_EQ(Label(), L"WAITING FOR DISPLAY");
}

TEST_F(PwmRestore, ADisplayThatAppearsIsLockedByTheNextPoll) {
    g_app.pwmSafe = true;
    Restore();
    g_displays = {{.name = L"A", .percent = 40}};
    RefreshPwmSafeTargets(true);
    EXPECT_EQ(Display(L"A").percent, 100U);
    VerifyPwmLock();
    EXPECT_EQ(Flags(), "on confirmed");
}

TEST_F(PwmRestore, ARestoredLockThatFailsStaysOn) {
    g_displays = {{.name = L"A", .percent = 40, .ignores = true}};
    g_app.pwmSafe = true;
    Restore();
    EXPECT_THAT(During([] { VerifyPwmLock(); }),
                ElementsAre("kill timer 5", "enumerate", "count", "log: " + kPending));
    EXPECT_EQ(Flags(), "on pending-logged");
}

TEST_F(PwmDisplayChange, WhileOffTheDisplaysAreOnlyCounted) {
    g_displays = {{.name = L"A", .percent = 40}};
    g_app.pwmRetryCount = 3;
    EXPECT_THAT(Change(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(g_app.pwmRetryCount, 3);
}

TEST_F(PwmDisplayChange, AssertsTheLockEvenIfItHolds) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    EXPECT_THAT(Change(), ElementsAre("enumerate", "count", "enumerate", "count", "A := 100", "kill timer 4",
                                      "set timer 4 2000", "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(Flags(), "on verifying");
}

TEST_F(PwmDisplayChange, ResetsTheCountOfFailures) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    g_app.pwmRetryCount = 9;
    EXPECT_THAT(Change(), ElementsAre("enumerate", "count", "enumerate", "count", "A := 100", "kill timer 4",
                                      "set timer 4 2000", "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(g_app.pwmRetryCount, 0);
}

TEST_F(PwmDisplayChange, ResetsTheLongPeriodAndLogsIt) {
    g_displays = {{.name = L"A", .percent = 40}};
    g_app.pwmSafe = true;
    g_app.pwmRetrySlowed = true;
    g_app.pwmRetryCount = 15;
    EXPECT_THAT(Change(),
                ElementsAre("enumerate", "count", "log: PWM-safe: display change - retry pace reset",
                            "enumerate", "count", "A := 100", "kill timer 4", "set timer 4 2000",
                            "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(Flags(), "on verifying");
    EXPECT_EQ(g_app.pwmRetryCount, 0);
}

TEST_F(PwmDisplayChange, WhileOffTheLongPeriodIsKept) {
    g_app.pwmRetrySlowed = true;
    EXPECT_THAT(Change(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "off slowed");
}

TEST_F(PwmDisplayChange, PollsAfterTheLastDisplayDisconnects) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    g_displays.clear();
    EXPECT_THAT(Change(),
                ElementsAre("enumerate", "count", "enumerate", "count", "kill timer 4", "set timer 4 2000"));
    EXPECT_EQ(Flags(), "on");
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}}));
}

TEST_F(PwmDisplayChange, AReconnectedDisplayKeepsTheValueSavedFirst) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    Display(L"A").present = false;
    Change();
    Display(L"A").present = true;
    Display(L"A").percent = 80;
    Change();
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}}));
    TogglePwmSafeByUser();
    EXPECT_EQ(Display(L"A").percent, 40U);
}

TEST_F(PwmDisplayChange, AVerificationOfAUserSwitchRemainsTheUsers) {
    g_displays = {{.name = L"A", .percent = 40, .ignores = true}};
    TogglePwmSafeByUser();
    Change();
    EXPECT_EQ(Flags(), "on verifying by-user");
    VerifyPwmLock();
    EXPECT_EQ(Flags(), "off");
}

TEST_F(PwmDisplayChange, NothingIsSetAtTheEndOfTheProgram) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    g_app.ending = true;
    Change();
    EXPECT_THAT(g_sets, IsEmpty());
}

TEST_F(PwmSlowing, TheTenthFailureSlowsThePoll) {
    FailTimes(9);
    EXPECT_EQ(Flags(), "on pending-logged");
    EXPECT_EQ(Label(), L"REASSERTING 100% LOCK");
    EXPECT_THAT(FailOnce(), ElementsAre("enumerate", "count", "enumerate", "count", "A := 100",
                                        "kill timer 4", "set timer 4 2000", "kill timer 5", "set timer 5 750",
                                        "kill timer 5", "enumerate", "count", "log: " + kSlowdownLine,
                                        "kill timer 4", "set timer 4 30000"));
    EXPECT_EQ(Flags(), "on slowed pending-logged");
    EXPECT_EQ(Label(), L"DISPLAY WON'T HOLD 100%");
}

TEST_F(PwmSlowing, ThirtyFailuresLogThePendingLineAndTheSlowdownLineOnce) {
    g_calls.clear();
    for (int i = 0; i < 30; ++i) {
        RefreshPwmSafeTargets(true);
        VerifyPwmLock();
    }
    EXPECT_EQ(LinesOf(kPending), 1);
    EXPECT_EQ(LinesOf(kSlowdownLine), 1);
    EXPECT_EQ(g_app.pwmRetryCount, 30);
}

TEST_F(PwmSlowing, AFailureAfterASuccessStartsANewEpisode) {
    FailTimes(3);
    Display(L"A").ignores = false;
    RefreshPwmSafeTargets(true);
    VerifyPwmLock();
    EXPECT_EQ(g_app.pwmRetryCount, 0);
    Display(L"A").percent = 40;
    Display(L"A").ignores = true;
    EXPECT_THAT(FailOnce(), testing::Contains("log: " + kPending));
    EXPECT_EQ(g_app.pwmRetryCount, 1);
}

TEST_F(PwmSlowing, FailuresWithoutADisplayAreNotCounted) {
    FailTimes(9);
    g_displays.clear();
    g_app.pwmVerifyPending = true;
    for (int i = 0; i < 5; ++i)
        VerifyPwmLock();
    EXPECT_EQ(g_app.pwmRetryCount, 9);
    EXPECT_FALSE(g_app.pwmRetrySlowed);
    g_displays = {{.name = L"A", .percent = 40, .ignores = true}};
    FailOnce();
    EXPECT_TRUE(g_app.pwmRetrySlowed);
}

TEST_F(PwmSlowing, ASuccessRestoresThePeriodAndTenMoreFailuresSlowItAgain) {
    FailTimes(10);
    Display(L"A").ignores = false;
    RefreshPwmSafeTargets(true);
    VerifyPwmLock();
    EXPECT_EQ(Flags(), "on confirmed");
    Display(L"A").percent = 40;
    Display(L"A").ignores = true;
    FailTimes(9);
    EXPECT_FALSE(g_app.pwmRetrySlowed);
    EXPECT_THAT(FailOnce(), testing::Contains("log: " + kSlowdownLine));
}

TEST_F(PwmSlowing, ADisplayTurnedUpByTheUserIsConfirmedByThePollWhileSlowed) {
    FailTimes(10);
    Display(L"A").percent = 100;
    EXPECT_THAT(During([] { RefreshPwmSafeTargets(true); }), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "on confirmed slowed pending-logged");
    EXPECT_EQ(Label(), L"DISPLAY LOCKED AT 100%");
}

TEST_F(PwmSlowing, ADisplayChangeRestoresThePeriod) {
    FailTimes(10);
    EXPECT_THAT(During([] { ReassertPwmSafeAfterChange(); }),
                ElementsAre("enumerate", "count", "log: PWM-safe: display change - retry pace reset",
                            "enumerate", "count", "A := 100", "kill timer 4", "set timer 4 2000",
                            "kill timer 5", "set timer 5 750"));
    VerifyPwmLock();
    EXPECT_EQ(g_app.pwmRetryCount, 1);
}

TEST_F(PwmSlowing, AToggleRestoresThePeriod) {
    FailTimes(10);
    TogglePwmSafeByUser();
    Display(L"A").ignores = false;
    EXPECT_THAT(
        During([] { TogglePwmSafeByUser(); }),
        ElementsAre("log: PWM-safe toggled ON by user", "enumerate", "count", "A := 100", "kill timer 4",
                    "set timer 4 2000", "kill timer 5", "set timer 5 750", "save on"));
    EXPECT_EQ(g_app.pwmRetryCount, 0);
    EXPECT_FALSE(g_app.pwmRetrySlowed);
}
