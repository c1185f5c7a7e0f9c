// Asserting the lock: the displays set, values saved and timers started, with and without displays.
#include "brightness/pwm_fixture.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PwmAssert : public PwmFixture {};

}  // namespace

TEST_F(PwmAssert, SetsEveryDisplayInListOrderThenStartsPollAndVerification) {
    g_displays = {{.name = L"P", .percent = 30, .kind = TargetKind::WmiPanel}, {.name = L"A", .percent = 60}};
    EXPECT_THAT(During([] { AssertPwmSafeLock(true); }),
                ElementsAre("enumerate", "count", "P := 100", "A := 100", "kill timer 4", "set timer 4 2000",
                            "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(Flags(), "on verifying by-user");
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 60}, {L"P", 30}}));
}

TEST_F(PwmAssert, AnAutomaticAssertionMakesTheSameCalls) {
    g_displays = {{.name = L"A", .percent = 60}};
    g_app.pwmSafe = true;
    EXPECT_THAT(During([] { AssertPwmSafeLock(false); }),
                ElementsAre("enumerate", "count", "A := 100", "kill timer 4", "set timer 4 2000",
                            "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(Flags(), "on verifying");
}

TEST_F(PwmAssert, WhileSlowedThePollIsStartedWith30Seconds) {
    g_displays = {{.name = L"A", .percent = 60}};
    g_app.pwmSafe = true;
    g_app.pwmRetrySlowed = true;
    EXPECT_THAT(During([] { AssertPwmSafeLock(false); }),
                ElementsAre("enumerate", "count", "A := 100", "kill timer 4", "set timer 4 30000",
                            "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(Flags(), "on verifying slowed");
}

TEST_F(PwmAssert, ClearsTheConfirmation) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    AssertPwmSafeLock(false);
    EXPECT_EQ(Flags(), "on verifying");
}

TEST_F(PwmAssert, AnAutomaticAssertionKeepsTheVerificationOfAUserSwitch) {
    g_displays = {{.name = L"A"}};
    StartVerifying(true);
    AssertPwmSafeLock(false);
    EXPECT_EQ(Flags(), "on verifying by-user");
}

TEST_F(PwmAssert, AnAutomaticAssertionDoesNotTurnAVerificationIntoTheUsers) {
    g_displays = {{.name = L"A"}};
    StartVerifying(false);
    AssertPwmSafeLock(false);
    EXPECT_EQ(Flags(), "on verifying");
}

TEST_F(PwmAssert, AUserAssertionTurnsAPendingVerificationIntoTheUsers) {
    g_displays = {{.name = L"A"}};
    StartVerifying(false);
    AssertPwmSafeLock(true);
    EXPECT_EQ(Flags(), "on verifying by-user");
}

TEST_F(PwmAssert, ASavedValueIsNeverReplaced) {
    g_displays = {{.name = L"A", .percent = 100}, {.name = L"B", .percent = 70}};
    g_app.pwmSafe = true;
    g_app.pwmSavedBrightness = {{L"A", 25}};
    AssertPwmSafeLock(false);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 25}, {L"B", 70}}));
    Display(L"B").percent = 5;
    AssertPwmSafeLock(false);
    AssertPwmSafeLock(true);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 25}, {L"B", 70}}));
}

TEST_F(PwmAssert, ASavedZeroIsAValueToo) {
    g_displays = {{.name = L"A", .percent = 80}};
    g_app.pwmSafe = true;
    g_app.pwmSavedBrightness = {{L"A", 0}};
    AssertPwmSafeLock(false);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 0}}));
}

TEST_F(PwmAssert, TheFirstValueOfTwoDisplaysWithTheSameNameIsSavedAndBothAreSet) {
    g_displays = {{.name = L"A", .percent = 30}, {.name = L"A", .percent = 60}};
    EXPECT_THAT(During([] { AssertPwmSafeLock(true); }),
                ElementsAre("enumerate", "count", "A := 100", "A := 100", "kill timer 4", "set timer 4 2000",
                            "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 30}}));
}

TEST_F(PwmAssert, SavedNamesAreInTheOrderOfTheirCodeUnits) {
    g_displays = {{.name = L"b"}, {.name = L"A1"}, {.name = L"\x00E9"}, {.name = L"A"}, {.name = L"B"}};
    AssertPwmSafeLock(true);
    std::vector<std::wstring> names;
    for (const auto& [name, percent] : g_app.pwmSavedBrightness)
        names.push_back(name);
    EXPECT_THAT(names, ElementsAre(L"A", L"A1", L"B", L"b", L"\x00E9"));
}

TEST_F(PwmAssert, DisplaysAt100AreSetToo) {
    g_displays = {{.name = L"A", .percent = 100}, {.name = L"B", .percent = 99}};
    EXPECT_THAT(During([] { AssertPwmSafeLock(true); }),
                ElementsAre("enumerate", "count", "A := 100", "B := 100", "kill timer 4", "set timer 4 2000",
                            "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 100}, {L"B", 99}}));
}

TEST_F(PwmAssert, ARefusalIsLeftToTheVerification) {
    g_displays = {{.name = L"A", .refuses = true}, {.name = L"B"}};
    EXPECT_THAT(During([] { AssertPwmSafeLock(true); }),
                ElementsAre("enumerate", "count", "A := 100", "B := 100", "kill timer 4", "set timer 4 2000",
                            "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(Flags(), "on verifying by-user");
}

TEST_F(PwmAssert, AUserAssertionWithoutADisplaySwitchesTheModeOffAndDiscardsTheSavedValues) {
    StartVerifying(true);
    g_app.pwmLockConfirmed = true;
    g_app.pwmSavedBrightness = {{L"A", 25}};
    EXPECT_THAT(During([] { AssertPwmSafeLock(true); }), ElementsAre("enumerate", "count", "kill timer 4"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
    EXPECT_THAT(g_sets, IsEmpty());
}

TEST_F(PwmAssert, AnAutomaticAssertionWithoutADisplayKeepsTheModeOnAndPolls) {
    g_app.pwmSafe = true;
    g_app.pwmSavedBrightness = {{L"A", 25}};
    EXPECT_THAT(During([] { AssertPwmSafeLock(false); }),
                ElementsAre("enumerate", "count", "kill timer 4", "set timer 4 2000"));
    EXPECT_EQ(Flags(), "on");
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 25}}));
    EXPECT_EQ(Label(), L"WAITING FOR DISPLAY");
}

TEST_F(PwmAssert, AnAutomaticAssertionWithoutADisplayKeepsTheLongPeriod) {
    g_app.pwmSafe = true;
    g_app.pwmRetrySlowed = true;
    EXPECT_THAT(During([] { AssertPwmSafeLock(false); }),
                ElementsAre("enumerate", "count", "kill timer 4", "set timer 4 30000"));
}

TEST_F(PwmAssert, AnAutomaticAssertionWithoutADisplayKeepsAPendingVerification) {
    StartVerifying(true);
    AssertPwmSafeLock(false);
    EXPECT_EQ(Flags(), "on verifying by-user");
}

TEST_F(PwmAssert, SetsTheDisplaysAndNoTimerWithoutAWindow) {
    g_app.mainWindow = nullptr;
    g_displays = {{.name = L"A"}};
    EXPECT_THAT(During([] { AssertPwmSafeLock(true); }), ElementsAre("enumerate", "count", "A := 100"));
    EXPECT_EQ(Flags(), "on verifying by-user");
    g_displays.clear();
    EXPECT_THAT(During([] { AssertPwmSafeLock(false); }), ElementsAre("enumerate", "count"));
}

TEST_F(PwmAssert, DoesNothingAtTheEndOfTheProgram) {
    g_displays = {{.name = L"A"}};
    g_app.ending = true;
    for (const bool byUser : {false, true}) {
        for (const bool on : {false, true}) {
            g_app.pwmSafe = on;
            EXPECT_THAT(During([&] { AssertPwmSafeLock(byUser); }), IsEmpty());
            EXPECT_EQ(Flags(), on ? "on" : "off");
            EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
        }
    }
}

TEST_F(PwmAssert, SchedulingThePollKillsAndSetsItByModeAndPeriod) {
    EXPECT_THAT(During([] { SchedulePwmSafePoll(); }), ElementsAre("kill timer 4"));
    g_app.pwmRetrySlowed = true;
    EXPECT_THAT(During([] { SchedulePwmSafePoll(); }), ElementsAre("kill timer 4"));
    g_app.pwmSafe = true;
    EXPECT_THAT(During([] { SchedulePwmSafePoll(); }), ElementsAre("kill timer 4", "set timer 4 30000"));
    g_app.pwmRetrySlowed = false;
    EXPECT_THAT(During([] { SchedulePwmSafePoll(); }), ElementsAre("kill timer 4", "set timer 4 2000"));
    g_app.mainWindow = nullptr;
    EXPECT_THAT(During([] { SchedulePwmSafePoll(); }), IsEmpty());
}
