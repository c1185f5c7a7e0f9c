// Switching the mode by the user.
#include "brightness/pwm_fixture.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PwmToggle : public PwmFixture {
protected:
    static CallRecord Toggle() {
        return During([] { TogglePwmSafeByUser(); });
    }
    static CallRecord Verify() {
        return During([] { VerifyPwmLock(); });
    }
};

}  // namespace

TEST_F(PwmToggle, SwitchingOnAssertsTheLockAndSavesOnce) {
    g_displays = {{.name = L"A", .percent = 40}};
    EXPECT_THAT(Toggle(), ElementsAre("log: PWM-safe toggled ON by user", "enumerate", "count", "A := 100",
                                      "kill timer 4", "set timer 4 2000", "kill timer 5", "set timer 5 750",
                                      "save on"));
    EXPECT_EQ(Flags(), "on verifying by-user");
    EXPECT_EQ(Label(), L"VERIFYING 100% LOCK");
}

TEST_F(PwmToggle, SwitchingOnIsConfirmedIfTheMonitorAccepts) {
    g_displays = {{.name = L"A", .percent = 40}};
    Toggle();
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count",
                                      "log: PWM-safe: 1 display(s) confirmed locked at 100%"));
    EXPECT_EQ(Label(), L"DISPLAY LOCKED AT 100%");
}

TEST_F(PwmToggle, TheLabelNamesABuiltInPanel) {
    g_displays = {{.name = L"P", .percent = 40, .kind = TargetKind::WmiPanel}};
    Toggle();
    Verify();
    EXPECT_EQ(Label(), L"BUILT-IN PANEL LOCKED AT 100%");
}

TEST_F(PwmToggle, SwitchingOnIsRevertedAndSavedAsOffIfTheMonitorIgnoresIt) {
    g_displays = {{.name = L"A", .percent = 40, .ignores = true}};
    Toggle();
    EXPECT_THAT(Verify(),
                ElementsAre("kill timer 5", "enumerate", "count",
                            "log: PWM-safe: 100% lock not confirmed (0 of 1) - reverting toggle", "enumerate",
                            "A := 40", "save off", "kill timer 4", "enumerate", "count"));
    EXPECT_EQ(Flags(), "off");
}

TEST_F(PwmToggle, SwitchingOnIsRevertedAndRestoredIfTheMonitorStopsAt98) {
    g_displays = {{.name = L"A", .percent = 40, .maximumPercent = 98}};
    Toggle();
    EXPECT_EQ(Display(L"A").percent, 98U);
    Verify();
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(Display(L"A").percent, 40U);
}

TEST_F(PwmToggle, SwitchingOnIsConfirmedIfTheMonitorStopsAt99) {
    g_displays = {{.name = L"A", .percent = 40, .maximumPercent = 99}};
    Toggle();
    Verify();
    EXPECT_EQ(Flags(), "on confirmed");
}

TEST_F(PwmToggle, SwitchingOnWithoutADisplayIsRevertedImmediatelyAndSavedAsOff) {
    EXPECT_THAT(Toggle(), ElementsAre("log: PWM-safe toggled ON by user", "enumerate", "count",
                                      "kill timer 4", "save off"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmToggle, SwitchingOnWithoutADisplayDiscardsSavedValues) {
    g_app.pwmSavedBrightness = {{L"A", 40}};
    Toggle();
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
    EXPECT_THAT(g_sets, IsEmpty());
}

TEST_F(PwmToggle, SwitchingOffRestoresTheValuesStopsTheTimersAndSavesOnce) {
    g_displays = {{.name = L"A"}, {.name = L"B"}};
    StartLocked();
    EXPECT_THAT(Toggle(),
                ElementsAre("log: PWM-safe toggled OFF by user", "kill timer 5", "enumerate", "A := 40",
                            "B := 40", "kill timer 4", "enumerate", "count", "save off"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(g_app.pwmTargetsAt100, 0);
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
    EXPECT_EQ(Label(), L"LOCK DISPLAY AT 100%");
}

TEST_F(PwmToggle, SwitchingOffCancelsTheVerification) {
    g_displays = {{.name = L"A", .percent = 40}};
    Toggle();
    EXPECT_THAT(Toggle(), ElementsAre("log: PWM-safe toggled OFF by user", "kill timer 5", "enumerate",
                                      "A := 40", "kill timer 4", "enumerate", "count", "save off"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(Display(L"A").percent, 40U);
}

TEST_F(PwmToggle, SwitchingOffClearsTheConfirmationEvenIfAllDisplaysAreAt100) {
    g_displays = {{.name = L"A"}};
    StartLocked(100);
    Toggle();
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmToggle, SwitchingOffWithoutSavedValuesEnumeratesOnce) {
    g_app.pwmSafe = true;
    EXPECT_THAT(Toggle(), ElementsAre("log: PWM-safe toggled OFF by user", "kill timer 5", "kill timer 4",
                                      "enumerate", "count", "save off"));
}

TEST_F(PwmToggle, SwitchingOffResetsTheLongPeriodWithoutLogging) {
    g_displays = {{.name = L"A"}};
    StartLocked();
    g_app.pwmRetrySlowed = true;
    g_app.pwmRetryCount = 12;
    EXPECT_THAT(Toggle(), ElementsAre("log: PWM-safe toggled OFF by user", "kill timer 5", "enumerate",
                                      "A := 40", "kill timer 4", "enumerate", "count", "save off"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_EQ(g_app.pwmRetryCount, 0);
}

TEST_F(PwmToggle, SwitchingOnPollsWithTheNormalPeriod) {
    g_displays = {{.name = L"A"}};
    g_app.pwmRetrySlowed = true;
    g_app.pwmRetryCount = 12;
    EXPECT_THAT(Toggle(), ElementsAre("log: PWM-safe toggled ON by user", "enumerate", "count", "A := 100",
                                      "kill timer 4", "set timer 4 2000", "kill timer 5", "set timer 5 750",
                                      "save on"));
    EXPECT_EQ(g_app.pwmRetryCount, 0);
}

TEST_F(PwmToggle, SwitchingOffAndOnAgainSavesTheCurrentValue) {
    g_displays = {{.name = L"A", .percent = 40}};
    Toggle();
    Verify();
    Toggle();
    Display(L"A").percent = 55;
    Toggle();
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 55}}));
}

TEST_F(PwmToggle, ASavedValueIsKeptThroughPollsAndDisplayChangesUntilItIsRestored) {
    g_displays = {{.name = L"A", .percent = 40}};
    Toggle();
    Verify();
    for (const std::uint32_t changedTo : {10U, 70U, 0U}) {
        Display(L"A").percent = changedTo;
        RefreshPwmSafeTargets(true);
        Verify();
        Display(L"A").percent = changedTo;
        ReassertPwmSafeAfterChange();
        Verify();
        EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}}));
        EXPECT_EQ(Flags(), "on confirmed");
    }
    Toggle();
    EXPECT_EQ(Display(L"A").percent, 40U);
}

TEST_F(PwmToggle, SwitchingOffDiscardsTheValueOfAnUnpluggedDisplay) {
    g_displays = {{.name = L"A", .percent = 40}, {.name = L"B", .percent = 60}};
    Toggle();
    Verify();
    Display(L"B").present = false;
    Toggle();
    EXPECT_EQ(Display(L"A").percent, 40U);
    EXPECT_EQ(Display(L"B").percent, 100U);
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
}

TEST_F(PwmToggle, NoTimerIsSetWithoutAWindow) {
    g_app.mainWindow = nullptr;
    g_displays = {{.name = L"A", .percent = 40}};
    EXPECT_THAT(Toggle(),
                ElementsAre("log: PWM-safe toggled ON by user", "enumerate", "count", "A := 100", "save on"));
    EXPECT_THAT(Toggle(), ElementsAre("log: PWM-safe toggled OFF by user", "enumerate", "A := 40",
                                      "enumerate", "count", "save off"));
}

TEST_F(PwmToggle, TogglingDoesNothingAtTheEndOfTheProgram) {
    g_displays = {{.name = L"A", .percent = 40}};
    g_app.ending = true;
    EXPECT_THAT(Toggle(), testing::IsEmpty());
    EXPECT_EQ(Flags(), "off");
}
