// The poll for the elevated run, at given times.
#include <gtest/gtest.h>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/gamma_fix.h"
#include "filter/gamma_range.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/fake_clock.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

bool g_expanded = false;

// The state that a refresh would show and a save would store.
std::string State() {
    std::ostringstream text;
    text << "expanded=" << g_app.gammaRangeExpanded << " pending=" << g_app.gammaFixPending
         << " epoch=" << g_app.gammaFixEpoch;
    return text.str();
}

}  // namespace

AMBREL_REPLACE(bool, IsGammaRangeExpanded, ()) {
    Record("read registry");
    return g_expanded;
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save ", State());
}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh ", State());
}

namespace {

constexpr std::uint64_t kDeadline = 5'120'000;
constexpr std::uint64_t kNow = 1'800'000'000;

const CallRecord kConfirmed = {"read registry", "kill timer 8", "save expanded=1 pending=0 epoch=1800000000",
                               "log: Gamma-range expansion confirmed in registry - restart pending",
                               "refresh expanded=1 pending=0 epoch=1800000000"};
const CallRecord kCallsOfTimeout = {"read registry", "kill timer 8",
                                    "log: Gamma-range fix not confirmed (helper cancelled?)"};
const CallRecord kWaiting = {"read registry"};

class GammaFixPoll : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = MakeHandle<HWND>(500);
        g_app.gammaFixPending = true;
        g_app.gammaFixDeadline = kDeadline;
        g_calls.clear();
        g_expanded = false;
        g_tick = kDeadline - 100'000;
        g_clock = kNow;
    }

    static CallRecord CallsOfPolling(std::uint64_t now, std::uint64_t tick) {
        g_calls.clear();
        PollGammaFix(now, tick);
        return g_calls;
    }
};

}  // namespace

TEST_F(GammaFixPoll, AConfirmedFixStopsSavesLogsAndShowsInThatOrder) {
    g_expanded = true;
    EXPECT_EQ(CallsOfPolling(kNow, kDeadline - 100'000), kConfirmed);
    EXPECT_TRUE(g_app.gammaRangeExpanded);
    EXPECT_FALSE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixEpoch, kNow);
}

TEST_F(GammaFixPoll, BeforeTheDeadlineThePollContinues) {
    EXPECT_EQ(CallsOfPolling(kNow, kDeadline - 118'000), kWaiting);
    EXPECT_EQ(CallsOfPolling(kNow, kDeadline - 1), kWaiting);
    EXPECT_TRUE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixDeadline, kDeadline);
}

TEST_F(GammaFixPoll, AtTheDeadlineThePollContinues) {
    EXPECT_EQ(CallsOfPolling(kNow, kDeadline), kWaiting);
    EXPECT_TRUE(g_app.gammaFixPending);
}

TEST_F(GammaFixPoll, PastTheDeadlineThePollStops) {
    EXPECT_EQ(CallsOfPolling(kNow, kDeadline + 1), kCallsOfTimeout);
    EXPECT_FALSE(g_app.gammaFixPending);
    EXPECT_FALSE(g_app.gammaRangeExpanded);
    EXPECT_EQ(g_app.gammaFixEpoch, 0U);
}

TEST_F(GammaFixPoll, AFixThatIsFoundAfterTheDeadlineIsConfirmed) {
    g_expanded = true;
    EXPECT_EQ(CallsOfPolling(kNow, kDeadline + 50'000), kConfirmed);
    EXPECT_TRUE(g_app.gammaRangeExpanded);
}

TEST_F(GammaFixPoll, AFixThatAppearsAfterSomePollsIsConfirmed) {
    CallsOfPolling(kNow - 4, kDeadline - 4'000);
    CallsOfPolling(kNow - 2, kDeadline - 2'000);
    g_expanded = true;
    EXPECT_EQ(CallsOfPolling(kNow, kDeadline), kConfirmed);
}

TEST_F(GammaFixPoll, GivingUpKeepsTheTimeOfAnEarlierFix) {
    g_app.gammaFixEpoch = 1'700'000'000;
    EXPECT_EQ(CallsOfPolling(kNow, kDeadline + 1), kCallsOfTimeout);
    EXPECT_EQ(g_app.gammaFixEpoch, 1'700'000'000U);
}

TEST_F(GammaFixPoll, AConfirmedFixReplacesTheTimeOfAnEarlierOne) {
    g_app.gammaFixEpoch = 1'700'000'000;
    g_expanded = true;
    CallsOfPolling(kNow, kDeadline - 1);
    EXPECT_EQ(g_app.gammaFixEpoch, kNow);
}

TEST_F(GammaFixPoll, TheTimeOfTheFixHasMoreThan32Bits) {
    g_expanded = true;
    CallsOfPolling(0x100000001, kDeadline - 1);
    EXPECT_EQ(g_app.gammaFixEpoch, 0x100000001U);
}

TEST_F(GammaFixPoll, TheClockDoesNotDecideWhetherItGivesUp) {
    EXPECT_EQ(CallsOfPolling(kNow + 86'400, kDeadline), kWaiting);
    EXPECT_EQ(CallsOfPolling(kNow - 86'400, kDeadline), kWaiting);
    EXPECT_EQ(CallsOfPolling(0, kDeadline + 1), kCallsOfTimeout);
}

TEST_F(GammaFixPoll, TheTimerPollsWithTheClockAndTheTimeSinceTheStart) {
    g_tick = kDeadline;
    OnGammaFixTimer();
    EXPECT_EQ(g_calls, kWaiting);
    g_calls.clear();
    g_tick = kDeadline + 1;
    OnGammaFixTimer();
    EXPECT_EQ(g_calls, kCallsOfTimeout);
    g_calls.clear();
    g_expanded = true;
    OnGammaFixTimer();
    EXPECT_EQ(g_calls, kConfirmed);
}
