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

class GammaBanner : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_calls.clear();
        g_clock = kBoot + kUp;
        g_tick = kUp * 1000;
    }

    static void RejectRamps() {
        g_app.useLegacyGamma = true;
        g_app.lastApplyRejected = true;
    }
};

}  // namespace

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
