// When the banner of rejected ramps is shown, and what is treated as a restart.
#include "filter/gamma_banner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/fake_clock.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t kBoot = 1'700'000'000;  // seconds since 1970
constexpr std::uint64_t kUp = 5'000;            // seconds since then

const std::string kDemoted =
    "log: Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted";

class GammaRange : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_calls.clear();
        g_clock = kBoot + kUp;
        g_tick = kUp * 1000;
    }

    static bool RestartDoneSince(std::uint64_t epoch) {
        g_app.gammaRangeExpanded = true;
        g_app.gammaFixEpoch = epoch;
        return IsRestartDoneSinceFix();
    }

    static void RejectRamps() {
        g_app.useLegacyGamma = true;
        g_app.lastApplyRejected = true;
    }
};

class GammaBanner : public GammaRange {};

}  // namespace

TEST_F(GammaRange, ARestartCountsOnlyWhenTheMachineStartedLaterThanTheFix) {
    EXPECT_TRUE(RestartDoneSince(kBoot - 1));
    EXPECT_FALSE(RestartDoneSince(kBoot));
    EXPECT_FALSE(RestartDoneSince(kBoot + 1));
}

TEST_F(GammaRange, AnOldFixCountsThroughLaterRestarts) {
    EXPECT_TRUE(RestartDoneSince(kBoot - 90 * 86'400));
}

TEST_F(GammaRange, TheUptimeIsTruncatedToSeconds) {
    g_clock = kBoot;
    g_tick = 999;
    EXPECT_TRUE(RestartDoneSince(kBoot - 1));
    g_tick = 1'999;
    EXPECT_FALSE(RestartDoneSince(kBoot - 1));
    EXPECT_TRUE(RestartDoneSince(kBoot - 2));
}

TEST_F(GammaRange, WithoutTheExpandedRangeNoRestartCounts) {
    g_app.gammaFixEpoch = kBoot - 1;
    EXPECT_FALSE(IsRestartDoneSinceFix());
}

TEST_F(GammaRange, AnExpansionMadeOutsideTheProgramHasNoRestartToCount) {
    EXPECT_FALSE(RestartDoneSince(0));
}

TEST_F(GammaRange, AfterAFixJustNowTimeAndSleepAloneAreNoRestart) {
    const std::uint64_t fixed = g_clock;
    EXPECT_FALSE(RestartDoneSince(fixed));
    g_clock += 30 * 86'400;
    g_tick += std::uint64_t{30} * 86'400 * 1000;
    EXPECT_FALSE(RestartDoneSince(fixed));
    g_tick = 20'000;
    EXPECT_TRUE(RestartDoneSince(fixed));
}

TEST_F(GammaRange, AnEpochInTheFarFutureIsNotPassed) {
    EXPECT_FALSE(RestartDoneSince(UINT64_MAX));
    EXPECT_FALSE(RestartDoneSince(std::uint64_t{1} << 63));
}

TEST_F(GammaRange, AClockSetBackBelowTheUptimeIsNoRestart) {
    g_clock = 100;
    EXPECT_FALSE(RestartDoneSince(50));
}

TEST_F(GammaBanner, ShowsWhileLegacyModesRampsAreRejected) {
    RejectRamps();
    EXPECT_TRUE(IsBannerVisible());
    LogBannerDemotionOnce();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(GammaBanner, IsNotShownWhileRampsAreAccepted) {
    g_app.useLegacyGamma = true;
    EXPECT_FALSE(IsBannerVisible());
}

TEST_F(GammaBanner, IsNeverShownWithTheModernPipelineRegardlessOfTheRegistry) {
    g_app.lastApplyRejected = true;
    for (const bool expanded : {false, true}) {
        for (const std::uint64_t epoch : {std::uint64_t{0}, kBoot - 1, kBoot + 1}) {
            g_app.gammaRangeExpanded = expanded;
            g_app.gammaFixEpoch = epoch;
            EXPECT_FALSE(IsBannerVisible());
            LogBannerDemotionOnce();
        }
    }
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_FALSE(g_app.bannerDemotedLogged);
}

TEST_F(GammaBanner, StaysBetweenTheFixAndTheRestart) {
    RejectRamps();
    g_app.gammaRangeExpanded = true;
    g_app.gammaFixEpoch = kBoot + 60;
    EXPECT_TRUE(IsBannerVisible());
    LogBannerDemotionOnce();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(GammaBanner, StaysWhenTheRangeWasExpandedOutsideTheProgram) {
    RejectRamps();
    g_app.gammaRangeExpanded = true;
    EXPECT_TRUE(IsBannerVisible());
}

TEST_F(GammaBanner, IsWithdrawnWhenTheRestartDidNotHelpAndThatIsLoggedOnce) {
    RejectRamps();
    g_app.gammaRangeExpanded = true;
    g_app.gammaFixEpoch = kBoot - 60;
    EXPECT_FALSE(IsBannerVisible());
    EXPECT_THAT(g_calls, IsEmpty()) << "a question logs nothing";
    for (int i = 0; i < 5; ++i)
        LogBannerDemotionOnce();
    EXPECT_THAT(g_calls, ElementsAre(kDemoted));
    EXPECT_TRUE(g_app.bannerDemotedLogged);

    // A ramp that is accepted in between does not cause a second line.
    g_app.lastApplyRejected = false;
    EXPECT_FALSE(IsBannerVisible());
    g_app.lastApplyRejected = true;
    EXPECT_FALSE(IsBannerVisible());
    LogBannerDemotionOnce();
    EXPECT_THAT(g_calls, ElementsAre(kDemoted));
}

TEST_F(GammaBanner, WithRampsAcceptedAfterTheRestartNothingIsLogged) {
    g_app.useLegacyGamma = true;
    g_app.gammaRangeExpanded = true;
    g_app.gammaFixEpoch = kBoot - 60;
    EXPECT_FALSE(IsBannerVisible());
    LogBannerDemotionOnce();
    EXPECT_THAT(g_calls, IsEmpty());
}
