// Whether the machine was started after the range was expanded, computed from the clock and the uptime.
#include "filter/gamma_restart.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "app/state/app_state.h"
#include "support/fake_clock.h"

namespace {

constexpr std::uint64_t kFixed = 1'800'000'000;  // when the expanded range was confirmed
constexpr std::uint64_t kHour = 3'600;
constexpr std::uint64_t kDay = 86'400;
constexpr std::uint64_t kBoot = 1'700'000'000;  // by the clock of the machine in RestartSinceFix
constexpr std::uint64_t kUp = 5'000;

// The machine was started at `boot` by its clock and has run for `seconds`.
bool StartedAfterTheFix(std::uint64_t boot, std::uint64_t seconds, std::uint64_t milliseconds = 0) {
    return WasStartedAfter(kFixed, boot + seconds, seconds * 1000 + milliseconds);
}

class RestartSinceFix : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_clock = kBoot + kUp;
        g_tick = kUp * 1000;
    }

    static bool RestartDoneSince(std::uint64_t epoch) {
        g_app.gammaRangeExpanded = true;
        g_app.gammaFixEpoch = epoch;
        return IsRestartDoneSinceFix();
    }
};

}  // namespace

TEST(GammaRestart, AMachineStartedInTheVerySecondOfTheFixWasNotStartedAfterIt) {
    EXPECT_FALSE(StartedAfterTheFix(kFixed, 0));
    EXPECT_FALSE(StartedAfterTheFix(kFixed, kHour));
}

TEST(GammaRestart, AMachineStartedOneSecondLaterWas) {
    EXPECT_TRUE(StartedAfterTheFix(kFixed + 1, 0));
    EXPECT_TRUE(StartedAfterTheFix(kFixed + 1, kHour));
}

TEST(GammaRestart, AMachineStartedOneSecondEarlierWasNot) {
    EXPECT_FALSE(StartedAfterTheFix(kFixed - 1, kHour));
}

TEST(GammaRestart, TheMomentOfTheFixIsNeverAfterIt) {
    for (const std::uint64_t seconds : {std::uint64_t{1}, kHour, 90 * kDay})
        EXPECT_FALSE(StartedAfterTheFix(kFixed - seconds, seconds)) << seconds;
}

TEST(GammaRestart, MillisecondsOfTheUptimeAreTruncated) {
    EXPECT_FALSE(WasStartedAfter(kFixed, kFixed + 10, 10'000));
    EXPECT_FALSE(WasStartedAfter(kFixed, kFixed + 10, 10'999));
    EXPECT_TRUE(WasStartedAfter(kFixed, kFixed + 10, 9'999));
    EXPECT_TRUE(WasStartedAfter(kFixed, kFixed + 1, 999));
    EXPECT_FALSE(WasStartedAfter(kFixed, kFixed + 1, 1'000));
}

TEST(GammaRestart, TimeThatPassesAwakeOrAsleepIsNotARestart) {
    const std::uint64_t boot = kFixed - kHour;
    for (std::uint64_t days = 0; days <= 400; days += 40)
        EXPECT_FALSE(StartedAfterTheFix(boot, kHour + days * kDay)) << days;
}

TEST(GammaRestart, EveryLaterRestartCounts) {
    EXPECT_TRUE(StartedAfterTheFix(kFixed + kHour, 20));
    EXPECT_TRUE(StartedAfterTheFix(kFixed + 900 * kDay, 20));
}

TEST(GammaRestart, AClockSetBackByADayIsNotARestart) {
    EXPECT_FALSE(WasStartedAfter(kFixed, kFixed + kHour - kDay, 2 * kHour * 1000));
}

TEST(GammaRestart, ARestartUnderAClockSetBackByADayCountsOnceTheClockHasCaughtUp) {
    EXPECT_FALSE(StartedAfterTheFix(kFixed + 60 - kDay, 20));
    EXPECT_FALSE(StartedAfterTheFix(kFixed, 20));
    EXPECT_TRUE(StartedAfterTheFix(kFixed + 60, 20));
}

TEST(GammaRestart, AClockSetBackBelowTheTimeSinceTheStartIsNotARestart) {
    EXPECT_FALSE(WasStartedAfter(1, 100, 101'000));
    EXPECT_FALSE(WasStartedAfter(1, 0, kDay * 1000));
    EXPECT_FALSE(WasStartedAfter(kFixed, 0, 1'000));
}

TEST(GammaRestart, WithoutATimeOfTheFixThereIsNoRestart) {
    EXPECT_FALSE(WasStartedAfter(0, kFixed, 0));
    EXPECT_FALSE(WasStartedAfter(0, kFixed, kDay * 1000));
}

TEST(GammaRestart, ATimeOfTheFixBeyondEveryDateIsNotPassed) {
    EXPECT_FALSE(WasStartedAfter(UINT64_MAX, kFixed, 0));
    EXPECT_FALSE(WasStartedAfter(std::uint64_t{1} << 63, kFixed, 0));
    EXPECT_TRUE(WasStartedAfter(0xFFFFFFFF, 0x100000000, 0)) << "seconds of more than 32 bits";
}

TEST_F(RestartSinceFix, ARestartCountsOnlyWhenTheMachineStartedLaterThanTheFix) {
    EXPECT_TRUE(RestartDoneSince(kBoot - 1));
    EXPECT_FALSE(RestartDoneSince(kBoot));
    EXPECT_FALSE(RestartDoneSince(kBoot + 1));
}

TEST_F(RestartSinceFix, AnOldFixCountsThroughLaterRestarts) {
    EXPECT_TRUE(RestartDoneSince(kBoot - 90 * 86'400));
}

TEST_F(RestartSinceFix, TheUptimeIsTruncatedToSeconds) {
    g_clock = kBoot;
    g_tick = 999;
    EXPECT_TRUE(RestartDoneSince(kBoot - 1));
    g_tick = 1'999;
    EXPECT_FALSE(RestartDoneSince(kBoot - 1));
    EXPECT_TRUE(RestartDoneSince(kBoot - 2));
}

TEST_F(RestartSinceFix, WithoutTheExpandedRangeNoRestartCounts) {
    g_app.gammaFixEpoch = kBoot - 1;
    EXPECT_FALSE(IsRestartDoneSinceFix());
}

TEST_F(RestartSinceFix, AnExpansionMadeOutsideTheProgramHasNoRestartToCount) {
    EXPECT_FALSE(RestartDoneSince(0));
}

TEST_F(RestartSinceFix, AfterAFixJustNowTimeAndSleepAreNotARestart) {
    const std::uint64_t fixed = g_clock;
    EXPECT_FALSE(RestartDoneSince(fixed));
    g_clock += 30 * 86'400;
    g_tick += std::uint64_t{30} * 86'400 * 1000;
    EXPECT_FALSE(RestartDoneSince(fixed));
    g_tick = 20'000;
    EXPECT_TRUE(RestartDoneSince(fixed));
}

TEST_F(RestartSinceFix, AnEpochInTheFarFutureIsNotPassed) {
    EXPECT_FALSE(RestartDoneSince(UINT64_MAX));
    EXPECT_FALSE(RestartDoneSince(std::uint64_t{1} << 63));
}

TEST_F(RestartSinceFix, AClockSetBackBelowTheUptimeIsNotARestart) {
    g_clock = 100;
    EXPECT_FALSE(RestartDoneSince(50));
}

TEST_F(RestartSinceFix, ARestartCountsOnlyWithTheExpandedRange) {
    g_app.gammaFixEpoch = 1;
    EXPECT_FALSE(IsRestartDoneSinceFix());
    g_app.gammaRangeExpanded = true;
    EXPECT_TRUE(IsRestartDoneSinceFix()) << "1970 is before any start";
    g_app.gammaFixEpoch = 0;
    EXPECT_FALSE(IsRestartDoneSinceFix()) << "expanded by another program";
}
