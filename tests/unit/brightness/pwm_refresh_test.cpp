// Enumerating the displays again, from the poll and otherwise, and restoring their brightness.
#include "brightness/pwm_fixture.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PwmRefresh : public PwmFixture {
protected:
    static CallRecord Poll() {
        return During([] { RefreshPwmSafeTargets(true); });
    }
    static CallRecord Refresh() {
        return During([] { RefreshPwmSafeTargets(false); });
    }
};

class PwmRelease : public PwmFixture {
protected:
    static CallRecord Release() {
        return During([] { ReleasePwmSafeLock(); });
    }
};

}  // namespace

TEST_F(PwmRefresh, WhileOffTheDisplaysAreOnlyCounted) {
    g_displays = {{.name = L"A", .percent = 40}};
    EXPECT_THAT(Refresh(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(Label(), L"LOCK DISPLAY AT 100%");
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "off");
    Display(L"A").percent = 100;
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmRefresh, WhileOffWithoutADisplayTheCardShows100) {
    EXPECT_THAT(Refresh(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmRefresh, TheConfirmationFollowsTheBrightnessOfTheDisplays) {
    g_displays = {{.name = L"A"}, {.name = L"B"}};
    StartLocked();
    Refresh();
    EXPECT_EQ(Flags(), "on confirmed");
    Display(L"B").percent = 98;
    EXPECT_THAT(Refresh(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "on");
    EXPECT_EQ(Label(), L"REASSERTING 100% LOCK");
    Display(L"B").percent = 99;
    EXPECT_THAT(Refresh(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "on confirmed");
    EXPECT_EQ(Label(), L"DISPLAY LOCKED AT 100%");
}

TEST_F(PwmRefresh, ALockWithoutADisplayIsNotConfirmed) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    g_displays.clear();
    Refresh();
    EXPECT_EQ(Flags(), "on");
    EXPECT_EQ(Label(), L"WAITING FOR DISPLAY");
}

TEST_F(PwmRefresh, TheConfirmationIsNotChangedWhileAVerificationIsPending) {
    g_displays = {{.name = L"A", .percent = 100}};
    StartVerifying(false);
    Refresh();
    EXPECT_EQ(Flags(), "on verifying");
    g_app.pwmLockConfirmed = true;
    Display(L"A").percent = 20;
    Refresh();
    EXPECT_EQ(Flags(), "on verifying confirmed");
    EXPECT_EQ(g_app.pwmTargetsAt100, 0);
}

TEST_F(PwmRefresh, ThePollReassertsALostLock) {
    g_displays = {{.name = L"A"}, {.name = L"B"}};
    StartLocked();
    Display(L"A").percent = 20;
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count", "enumerate", "count", "A := 100", "B := 100",
                                    "kill timer 4", "set timer 4 2000", "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(Flags(), "on verifying");
    EXPECT_EQ(Display(L"A").percent, 100U);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"B", 40}}));
}

TEST_F(PwmRefresh, ThePollDoesNotReassertALockThatHolds) {
    g_displays = {{.name = L"A"}, {.name = L"B"}};
    StartLocked();
    Display(L"A").percent = 99;
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "on confirmed");
}

TEST_F(PwmRefresh, ThePollDoesNotReassertWhileAVerificationIsPending) {
    g_displays = {{.name = L"A", .percent = 20}};
    StartVerifying(false);
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "on verifying");
}

TEST_F(PwmRefresh, APollWithoutDisplaysEnumeratesTwiceAndContinues) {
    g_app.pwmSafe = true;
    EXPECT_THAT(Poll(),
                ElementsAre("enumerate", "count", "enumerate", "count", "kill timer 4", "set timer 4 2000"));
    EXPECT_EQ(Flags(), "on");
    EXPECT_EQ(Label(), L"WAITING FOR DISPLAY");
}

TEST_F(PwmRefresh, ADisplayThatAppearsIsLockedByThePoll) {
    g_app.pwmSafe = true;
    Poll();
    g_displays = {{.name = L"A", .percent = 35}};
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count", "enumerate", "count", "A := 100", "kill timer 4",
                                    "set timer 4 2000", "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 35}}));
}

TEST_F(PwmRefresh, TheBrightnessOfASecondDisplayIsSavedToo) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    g_displays.push_back({.name = L"B", .percent = 10});
    Poll();
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"B", 10}}));
}

TEST_F(PwmRefresh, ASecondDisplayAt100NeedsNoAssertion) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    g_displays.push_back({.name = L"B", .percent = 100});
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}}));
}

TEST_F(PwmRefresh, WhileSlowedThePollKeepsTheLongPeriod) {
    g_displays = {{.name = L"A", .percent = 20}};
    g_app.pwmSafe = true;
    g_app.pwmRetrySlowed = true;
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count", "enumerate", "count", "A := 100", "kill timer 4",
                                    "set timer 4 30000", "kill timer 5", "set timer 5 750"));
}

TEST_F(PwmRefresh, APollThatFindsAllAt100ConfirmsTheLockAndKeepsTheLongPeriod) {
    g_displays = {{.name = L"A", .percent = 100}};
    g_app.pwmSafe = true;
    g_app.pwmRetrySlowed = true;
    g_app.pwmRetryCount = 12;
    g_app.pwmPendingLogged = true;
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count"));
    EXPECT_EQ(Flags(), "on confirmed slowed pending-logged");
    EXPECT_EQ(g_app.pwmRetryCount, 12);
}

TEST_F(PwmRefresh, ADisplayThatReaches100BetweenTheTwoEnumerationsIsSetAnyway) {
    g_displays = {{.name = L"A", .percent = 20}};
    g_app.pwmSafe = true;
    int enumerations = 0;
    g_whileWaiting = [&](Moment moment) {
        if (moment == Moment::BeforeListing && ++enumerations == 2) Display(L"A").percent = 100;
    };
    EXPECT_THAT(Poll(), ElementsAre("enumerate", "count", "enumerate", "count", "A := 100", "kill timer 4",
                                    "set timer 4 2000", "kill timer 5", "set timer 5 750"));
    EXPECT_EQ(Flags(), "on verifying");
}

TEST_F(PwmRefresh, ADisplayThatDisconnectsBetweenTheTwoEnumerationsIsPolledFor) {
    g_displays = {{.name = L"A", .percent = 20}};
    g_app.pwmSafe = true;
    int enumerations = 0;
    g_whileWaiting = [&](Moment moment) {
        if (moment == Moment::BeforeListing && ++enumerations == 2) g_displays.clear();
    };
    EXPECT_THAT(Poll(),
                ElementsAre("enumerate", "count", "enumerate", "count", "kill timer 4", "set timer 4 2000"));
    EXPECT_EQ(Flags(), "on");
}

TEST_F(PwmRefresh, ThePollSetsNothingAtTheEndOfTheProgram) {
    g_displays = {{.name = L"A", .percent = 20}};
    g_app.pwmSafe = true;
    g_app.ending = true;
    Poll();
    EXPECT_THAT(g_sets, IsEmpty());
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
}

TEST_F(PwmRelease, NoDisplayIsQueriedWithoutSavedValues) {
    g_displays = {{.name = L"A"}};
    EXPECT_THAT(Release(), IsEmpty());
}

TEST_F(PwmRelease, EachDisplayIsRestoredInListOrder) {
    g_displays = {{.name = L"B", .percent = 100}, {.name = L"A", .percent = 100}};
    g_app.pwmSavedBrightness = {{L"A", 10}, {L"B", 20}};
    EXPECT_THAT(Release(), ElementsAre("enumerate", "B := 20", "A := 10"));
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
}

TEST_F(PwmRelease, DisplaysWithoutASavedValueAreNotSet) {
    g_displays = {{.name = L"C", .percent = 77}, {.name = L"A", .percent = 100}};
    g_app.pwmSavedBrightness = {{L"A", 10}};
    EXPECT_THAT(Release(), ElementsAre("enumerate", "A := 10"));
    EXPECT_EQ(Display(L"C").percent, 77U);
}

TEST_F(PwmRelease, NamesAreComparedByCodeUnits) {
    g_displays = {{.name = L"a"}, {.name = L"A "}, {.name = L"A\x0301"}};
    g_app.pwmSavedBrightness = {{L"A", 10}, {L"\x00C1", 20}};
    EXPECT_THAT(Release(), ElementsAre("enumerate"));
}

TEST_F(PwmRelease, ValuesOfDisconnectedDisplaysAreDiscarded) {
    g_displays = {{.name = L"A", .percent = 100}, {.name = L"B", .percent = 100, .present = false}};
    g_app.pwmSavedBrightness = {{L"A", 10}, {L"B", 20}};
    EXPECT_THAT(Release(), ElementsAre("enumerate", "A := 10"));
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
    Display(L"B").present = true;
    EXPECT_THAT(Release(), IsEmpty());
}

TEST_F(PwmRelease, ARefusedValueIsNotRetriedAndIsDiscarded) {
    g_displays = {{.name = L"A", .percent = 100, .refuses = true}, {.name = L"B", .percent = 100}};
    g_app.pwmSavedBrightness = {{L"A", 10}, {L"B", 20}};
    EXPECT_THAT(Release(), ElementsAre("enumerate", "A := 10", "B := 20"));
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
}

TEST_F(PwmRelease, TwoDisplaysWithTheSameNameAreBothRestored) {
    g_displays = {{.name = L"A", .percent = 100}, {.name = L"A", .percent = 100}};
    g_app.pwmSavedBrightness = {{L"A", 10}};
    EXPECT_THAT(Release(), ElementsAre("enumerate", "A := 10", "A := 10"));
}

TEST_F(PwmRelease, TheModeItsFlagsAndItsTimersDoNotChange) {
    g_displays = {{.name = L"A", .percent = 100}};
    StartVerifying(true);
    g_app.pwmRetrySlowed = true;
    g_app.pwmTargetCount = 5;
    EXPECT_THAT(Release(), ElementsAre("enumerate", "A := 40"));
    EXPECT_EQ(Flags(), "on verifying by-user slowed");
    EXPECT_EQ(g_app.pwmTargetCount, 5);
}

TEST_F(PwmRelease, TheValuesAreRestoredAtTheEndOfTheProgram) {
    g_displays = {{.name = L"A", .percent = 100}};
    StartLocked();
    g_app.ending = true;
    EXPECT_THAT(Release(), ElementsAre("enumerate", "A := 40"));
    EXPECT_EQ(Display(L"A").percent, 40U);
}
