// The verification of an assertion: success, and failure with and without a preceding switch by the user.
#include "brightness/pwm_fixture.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PwmVerify : public PwmFixture {
protected:
    static CallRecord Verify() {
        return During([] { VerifyPwmLock(); });
    }
};

}  // namespace

TEST_F(PwmVerify, AllDisplaysAt100ConfirmTheLock) {
    g_displays = {{.name = L"A", .percent = 100}};
    StartVerifying(false);
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count",
                                      "log: PWM-safe: 1 display(s) confirmed locked at 100%"));
    EXPECT_EQ(Flags(), "on confirmed");
}

TEST_F(PwmVerify, AllDisplaysAt100ConfirmTheUsersSwitch) {
    g_displays = {{.name = L"A", .percent = 100}, {.name = L"B", .percent = 100}};
    StartVerifying(true);
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count",
                                      "log: PWM-safe: 2 display(s) confirmed locked at 100%"));
    EXPECT_EQ(Flags(), "on confirmed");
}

TEST_F(PwmVerify, NinetyNinePercentIsTreatedAs100) {
    g_displays = {{.name = L"A", .percent = 99}, {.name = L"B", .percent = 100}};
    StartVerifying(true);
    Verify();
    EXPECT_EQ(Flags(), "on confirmed");
}

TEST_F(PwmVerify, SuccessKeepsTheSavedValues) {
    g_displays = {{.name = L"A", .percent = 100}};
    StartVerifying(false);
    Verify();
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}}));
}

TEST_F(PwmVerify, SuccessEndsTheEpisodeOfFailures) {
    g_displays = {{.name = L"A", .percent = 100}};
    StartVerifying(false);
    g_app.pwmPendingLogged = true;
    g_app.pwmRetryCount = 7;
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count",
                                      "log: PWM-safe: 1 display(s) confirmed locked at 100%"));
    EXPECT_EQ(Flags(), "on confirmed");
    EXPECT_EQ(g_app.pwmRetryCount, 0);
}

TEST_F(PwmVerify, SuccessWhileSlowedRestoresTheNormalPeriod) {
    g_displays = {{.name = L"A", .percent = 100}};
    StartVerifying(false);
    g_app.pwmRetrySlowed = true;
    g_app.pwmRetryCount = 10;
    EXPECT_THAT(Verify(),
                ElementsAre("kill timer 5", "enumerate", "count",
                            "log: PWM-safe: lock recovered - normal polling resumed", "kill timer 4",
                            "set timer 4 2000", "log: PWM-safe: 1 display(s) confirmed locked at 100%"));
    EXPECT_EQ(Flags(), "on confirmed");
    EXPECT_EQ(g_app.pwmRetryCount, 0);
}

TEST_F(PwmVerify, SuccessWhileOffClearsOnlyTheVerification) {
    g_displays = {{.name = L"A", .percent = 100}};
    g_app.pwmVerifyPending = true;
    g_app.pwmVerifyIsUserToggle = true;
    g_app.pwmLockConfirmed = true;
    g_app.pwmPendingLogged = true;
    g_app.pwmRetrySlowed = true;
    g_app.pwmRetryCount = 4;
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count"));
    EXPECT_EQ(Flags(), "off slowed pending-logged");
    EXPECT_EQ(g_app.pwmRetryCount, 4);
}

TEST_F(PwmVerify, AFailureAfterTheUsersSwitchRevertsItAndRestoresTheValues) {
    g_displays = {{.name = L"A", .percent = 40, .ignores = true}, {.name = L"B", .percent = 100}};
    StartVerifying(true);
    g_app.pwmSavedBrightness = {{L"A", 40}, {L"B", 65}};
    EXPECT_THAT(Verify(),
                ElementsAre("kill timer 5", "enumerate", "count",
                            "log: PWM-safe: 100% lock not confirmed (1 of 2) - reverting toggle", "enumerate",
                            "A := 40", "B := 65", "save off", "kill timer 4", "enumerate", "count"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
    EXPECT_EQ(Display(L"B").percent, 65U);
    EXPECT_EQ(g_app.pwmRetryCount, 0);
    EXPECT_EQ(Label(), L"LOCK DISPLAY AT 100%");
}

TEST_F(PwmVerify, AFailureAfterTheUsersSwitchEndsTheEpisodeOfFailures) {
    g_displays = {{.name = L"A", .percent = 40}};
    StartVerifying(true);
    g_app.pwmPendingLogged = true;
    Verify();
    EXPECT_EQ(Flags(), "off");
}

TEST_F(PwmVerify, ADisplayThatDisconnectsAfterTheUsersSwitchRevertsIt) {
    g_displays = {{.name = L"A"}};
    StartVerifying(true);
    g_displays.clear();
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count",
                                      "log: PWM-safe: 100% lock not confirmed (0 of 0) - reverting toggle",
                                      "enumerate", "save off", "kill timer 4", "enumerate", "count"));
    EXPECT_EQ(Flags(), "off");
    EXPECT_THAT(g_app.pwmSavedBrightness, IsEmpty());
}

TEST_F(PwmVerify, AFailureAfterTheUsersSwitchWhileSlowedKeepsTheSlowdown) {
    g_displays = {{.name = L"A", .percent = 40}};
    StartVerifying(true);
    g_app.pwmRetrySlowed = true;
    g_app.pwmRetryCount = 11;
    Verify();
    EXPECT_EQ(Flags(), "off slowed");
    EXPECT_EQ(g_app.pwmRetryCount, 11);
}

TEST_F(PwmVerify, AnyOtherFailureIsCountedAndLeftToThePoll) {
    g_displays = {{.name = L"A", .percent = 40}, {.name = L"B", .percent = 100}};
    StartVerifying(false);
    g_app.pwmLockConfirmed = true;
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count",
                                      "log: PWM-safe: lock pending (1 of 2 at 100%) - poll will re-assert"));
    EXPECT_EQ(Flags(), "on pending-logged");
    EXPECT_EQ(g_app.pwmRetryCount, 1);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"A", 40}, {L"B", 40}}));
    EXPECT_EQ(Label(), L"REASSERTING 100% LOCK");
}

TEST_F(PwmVerify, TheNextFailureOfTheEpisodeIsCountedWithoutLogging) {
    g_displays = {{.name = L"A", .percent = 40}};
    StartVerifying(false);
    g_app.pwmPendingLogged = true;
    g_app.pwmRetryCount = 1;
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count"));
    EXPECT_EQ(g_app.pwmRetryCount, 2);
}

TEST_F(PwmVerify, AFailureWithoutADisplayIsLoggedAndNotCounted) {
    StartVerifying(false);
    g_app.pwmRetryCount = 9;
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count",
                                      "log: PWM-safe: lock pending (0 of 0 at 100%) - poll will re-assert"));
    EXPECT_EQ(Flags(), "on pending-logged");
    EXPECT_EQ(g_app.pwmRetryCount, 9);
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count"));
    EXPECT_EQ(g_app.pwmRetryCount, 9);
}

TEST_F(PwmVerify, TheNinthFailureDoesNotSlowThePoll) {
    g_displays = {{.name = L"A", .percent = 40}};
    StartVerifying(false);
    g_app.pwmPendingLogged = true;
    g_app.pwmRetryCount = 8;
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count"));
    EXPECT_EQ(g_app.pwmRetryCount, 9);
    EXPECT_FALSE(g_app.pwmRetrySlowed);
}

TEST_F(PwmVerify, TheTenthFailureSlowsThePoll) {
    g_displays = {{.name = L"A", .percent = 40}};
    StartVerifying(false);
    g_app.pwmPendingLogged = true;
    g_app.pwmRetryCount = 9;
    EXPECT_THAT(
        Verify(),
        ElementsAre("kill timer 5", "enumerate", "count",
                    "log: PWM-safe: display will not hold 100% after 10 attempts - slowing retries to "
                    "30s",
                    "kill timer 4", "set timer 4 30000"));
    EXPECT_EQ(Flags(), "on slowed pending-logged");
    EXPECT_EQ(g_app.pwmRetryCount, 10);
    EXPECT_EQ(Label(), L"DISPLAY WON'T HOLD 100%");
}

TEST_F(PwmVerify, MoreThanTenFailuresSlowThePollToo) {
    g_displays = {{.name = L"A", .percent = 40}};
    StartVerifying(false);
    g_app.pwmPendingLogged = true;
    g_app.pwmRetryCount = 14;
    EXPECT_THAT(
        Verify(),
        ElementsAre("kill timer 5", "enumerate", "count",
                    "log: PWM-safe: display will not hold 100% after 15 attempts - slowing retries to "
                    "30s",
                    "kill timer 4", "set timer 4 30000"));
}

TEST_F(PwmVerify, FailuresWhileSlowedAreCountedWithoutLogging) {
    g_displays = {{.name = L"A", .percent = 40}};
    StartVerifying(false);
    g_app.pwmPendingLogged = true;
    g_app.pwmRetrySlowed = true;
    g_app.pwmRetryCount = 10;
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count"));
    EXPECT_EQ(g_app.pwmRetryCount, 11);
    EXPECT_EQ(Flags(), "on slowed pending-logged");
}

TEST_F(PwmVerify, ATenthFailureThatIsTheFirstLoggedLogsBothLinesInOrder) {
    g_displays = {{.name = L"A", .percent = 40}};
    StartVerifying(false);
    g_app.pwmRetryCount = 9;
    EXPECT_THAT(
        Verify(),
        ElementsAre("kill timer 5", "enumerate", "count",
                    "log: PWM-safe: lock pending (0 of 1 at 100%) - poll will re-assert",
                    "log: PWM-safe: display will not hold 100% after 10 attempts - slowing retries to "
                    "30s",
                    "kill timer 4", "set timer 4 30000"));
}

TEST_F(PwmVerify, TheOtherDisplaysAreConfirmedIfOneCanNoLongerBeRead) {
    g_displays = {{.name = L"A", .percent = 100}, {.name = L"B", .present = false}};
    StartVerifying(false);
    EXPECT_THAT(Verify(), ElementsAre("kill timer 5", "enumerate", "count",
                                      "log: PWM-safe: 1 display(s) confirmed locked at 100%"));
}
