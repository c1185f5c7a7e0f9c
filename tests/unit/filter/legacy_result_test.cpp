// The result of a ramp: accepted, refused or read back differently; and what is counted, logged and shown.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_model.h"
#include "filter/fake_screen.h"
#include "filter/legacy_gamma.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_cursors);

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

using testing::ElementsAre;

int WINAPI FakeMessageBoxW(HWND, LPCWSTR, LPCWSTR, UINT) {
    Record("box");
    return IDOK;
}

BOOL WINAPI FakePostMessageW(HWND, UINT, WPARAM, LPARAM) {
    Record("post");
    return TRUE;
}

const CallRecord kReadBack = {"get dc", "set ramp", "read ramp", "release dc"};
const CallRecord kNotReadBack = {"get dc", "set ramp", "release dc"};
const CallRecord kWithoutContext = {"get dc"};

const std::string kRestore = "restore cursors";

const std::string kValues = "(intensity=0.500 brightness=0.250)";
const std::string kAcceptedAgain = "log: Legacy ramp accepted again " + kValues;
const std::string kRefused = "log: Legacy ramp REJECTED " + kValues + " - Windows range limit";
const std::string kReadWrong =
    "log: Legacy ramp REJECTED " + kValues + " (read-back mismatch streak) - Windows range limit";
const std::string kPending = " (registry expanded - restart pending?)";

CallRecord Followed(CallRecord first, const CallRecord& then) {
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

// The cursors are tinted last, regardless of the ramp's result.
CallRecord CallsOfApplying(const CallRecord& ramp, const CallRecord& shown = {}) {
    return Followed(Followed(ramp, shown), {"tint cursors"});
}

class LegacyResult : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = MakeHandle<HWND>(0x1234);
        g_app.filterOn = true;
        g_app.useLegacyGamma = true;
        g_app.intensity = 0.5;
        g_app.brightness = 0.25;
        g_screen = FakeScreen{};
        g_model = FakeModel{};
        g_calls.clear();
    }

    void TearDown() override {
        // In every case the screen's device context is released and the pipeline is unchanged.
        EXPECT_EQ(g_screen.contextsHeld, 0);
        EXPECT_TRUE(g_app.useLegacyGamma);
    }

    static CallRecord CallsOfOneApply() {
        g_calls.clear();
        ApplyLegacyRamp();
        return g_calls;
    }

    static void Refuse() {
        g_screen.acceptsRamps = false;
        ApplyLegacyRamp();
        g_screen.acceptsRamps = true;
    }

    static void ApplyWithMismatch() {
        g_screen.deviations = {{kGreen, 128, 2049}};
        ApplyLegacyRamp();
        g_screen.deviations.clear();
    }

    static void ExpectCounts(int accepted, int rejected, int streak) {
        EXPECT_EQ(g_app.rampsAccepted, accepted);
        EXPECT_EQ(g_app.rampsRejected, rejected);
        EXPECT_EQ(g_app.readBackMismatchStreak, streak);
    }
};

}  // namespace

AMBREL_SEAM(MessageBoxW, FakeMessageBoxW);
AMBREL_SEAM(PostMessageW, FakePostMessageW);

TEST_F(LegacyResult, AnAcceptedRampUsesOneContextTintsTheCursorsAndLogsAndShowsNothing) {
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack));
    ExpectCounts(1, 0, 0);
    EXPECT_FALSE(g_app.lastApplyRejected);
    EXPECT_TRUE(g_screen.readBuffersWereZeroed);
}

TEST_F(LegacyResult, ARefusedRampIsNotReadBackAndIsLoggedAndShownAndTheCursorsAreTinted) {
    g_screen.acceptsRamps = false;
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kNotReadBack, {kRefused, "refresh"}));
    ExpectCounts(0, 1, 0);
    EXPECT_TRUE(g_app.lastApplyRejected);
}

TEST_F(LegacyResult, ARefusalAfterTheRangeWasExpandedLogsThatARestartMayBePending) {
    g_app.gammaRangeExpanded = true;
    g_screen.acceptsRamps = false;
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kNotReadBack, {kRefused + kPending, "refresh"}));
}

TEST_F(LegacyResult, TwoReadBackMismatchesAreToleratedAndTheThirdIsARejection) {
    g_screen.deviations = {{kBlue, 240, -2049}};
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack));
    ExpectCounts(1, 0, 1);
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack));
    ExpectCounts(2, 0, 2);
    EXPECT_FALSE(g_app.lastApplyRejected);
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack, {kReadWrong, "refresh"}));
    ExpectCounts(2, 1, 3);
    EXPECT_TRUE(g_app.lastApplyRejected);
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack));
    ExpectCounts(2, 2, 4);
}

TEST_F(LegacyResult, MismatchesAfterTheRangeWasExpandedLogThatARestartMayBePending) {
    g_app.gammaRangeExpanded = true;
    g_app.readBackMismatchStreak = 2;
    g_screen.deviations = {{kRed, 16, 2049}};
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack, {kReadWrong + kPending, "refresh"}));
}

TEST_F(LegacyResult, ADifferenceOf2048StillMatchesAndOf2049DoesNotEitherWay) {
    g_app.brightness = 1.0;
    for (const std::size_t channel : {kRed, kGreen, kBlue}) {
        for (const int by : {2048, -2048, 2049, -2049}) {
            g_app.readBackMismatchStreak = 0;
            g_screen.deviations = {{channel, 112, by}};
            ApplyLegacyRamp();
            EXPECT_EQ(g_app.readBackMismatchStreak, by > 2048 || by < -2048 ? 1 : 0) << channel << " " << by;
        }
    }
}

TEST_F(LegacyResult, ADifferenceOfMoreThanHalfTheRangeIsNotAMatch) {
    g_app.brightness = 1.0;
    g_screen.deviations = {{kRed, 0, 65535}};
    ApplyLegacyRamp();
    EXPECT_EQ(g_app.readBackMismatchStreak, 1);
    g_screen.deviations = {{kRed, 240, -61680}};
    ApplyLegacyRamp();
    EXPECT_EQ(g_app.readBackMismatchStreak, 2);
}

TEST_F(LegacyResult, OnlyEverySixteenthEntryOfEachChannelIsCompared) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
        for (std::size_t entry = 0; entry < 256; ++entry) {
            g_app.readBackMismatchStreak = 0;
            g_screen.deviations = {{channel, entry, 3000}};
            ApplyLegacyRamp();
            EXPECT_EQ(g_app.readBackMismatchStreak, entry % 16 == 0 ? 1 : 0) << channel << " " << entry;
        }
    }
}

TEST_F(LegacyResult, ManyDifferentSamplesInOneRampCountOnce) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
        for (std::size_t entry = 0; entry < 256; ++entry)
            g_screen.deviations.push_back({channel, entry, 9000});
    }
    ApplyLegacyRamp();
    ExpectCounts(1, 0, 1);
}

TEST_F(LegacyResult, ADifferenceInBothDirectionsDoesNotCancelOut) {
    g_screen.deviations = {{kRed, 128, 2049}, {kGreen, 128, -2049}};
    ApplyLegacyRamp();
    EXPECT_EQ(g_app.readBackMismatchStreak, 1);
}

TEST_F(LegacyResult, AnInterveningMatchEndsTheStreak) {
    ApplyWithMismatch();
    ApplyWithMismatch();
    ApplyLegacyRamp();
    ExpectCounts(3, 0, 0);
    ApplyWithMismatch();
    ApplyWithMismatch();
    ExpectCounts(5, 0, 2);
    EXPECT_FALSE(g_app.lastApplyRejected);
    ApplyWithMismatch();
    ExpectCounts(5, 1, 3);
}

TEST_F(LegacyResult, AFailedReadBackIsTreatedAsAMatchAndEndsTheStreak) {
    ApplyWithMismatch();
    ApplyWithMismatch();
    g_screen.canBeRead = false;
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack));
    ExpectCounts(3, 0, 0);
    g_screen.canBeRead = true;
    ApplyWithMismatch();
    ExpectCounts(4, 0, 1);
}

TEST_F(LegacyResult, WithoutAContextTheApplyIsTreatedAsAcceptedAndEndsTheStreak) {
    ApplyWithMismatch();
    ApplyWithMismatch();
    g_screen.givesContext = false;
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kWithoutContext));
    ExpectCounts(3, 0, 0);
}

TEST_F(LegacyResult, WithoutAContextARejectionIsCleared) {
    Refuse();
    g_screen.givesContext = false;
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kWithoutContext, {kAcceptedAgain, "refresh"}));
    EXPECT_FALSE(g_app.lastApplyRejected);
}

TEST_F(LegacyResult, ARefusalDoesNotChangeTheStreak) {
    ApplyWithMismatch();
    ApplyWithMismatch();
    Refuse();
    ExpectCounts(2, 1, 2);
    ApplyWithMismatch();
    ExpectCounts(2, 2, 3);
}

TEST_F(LegacyResult, AfterARefusalAFirstMismatchIsTreatedAsAcceptedAgain) {
    Refuse();
    g_screen.deviations = {{kRed, 32, 5000}};
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack, {kAcceptedAgain, "refresh"}));
    ExpectCounts(1, 1, 1);
    EXPECT_FALSE(g_app.lastApplyRejected);
}

TEST_F(LegacyResult, AfterAStreakAMatchIsAcceptedAgainAndTheNextStreakNeedsThree) {
    for (int i = 0; i < 4; ++i)
        ApplyWithMismatch();
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack, {kAcceptedAgain, "refresh"}));
    ExpectCounts(3, 2, 0);
    ApplyWithMismatch();
    ApplyWithMismatch();
    EXPECT_FALSE(g_app.lastApplyRejected);
    ApplyWithMismatch();
    EXPECT_TRUE(g_app.lastApplyRejected);
    ExpectCounts(5, 3, 3);
}

TEST_F(LegacyResult, TenConsecutiveRejectionsLogOneLineAndCountTenAndTheNextAcceptanceLogsOneLine) {
    CallRecord expected;
    g_screen.acceptsRamps = false;
    for (int i = 0; i < 10; ++i) {
        ApplyLegacyRamp();
        expected = Followed(expected, i == 0 ? CallsOfApplying(kNotReadBack, {kRefused, "refresh"})
                                             : CallsOfApplying(kNotReadBack));
    }
    EXPECT_EQ(g_calls, expected);
    ExpectCounts(0, 10, 0);

    g_screen.acceptsRamps = true;
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack, {kAcceptedAgain, "refresh"}));
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack));
    ExpectCounts(2, 10, 0);
}

TEST_F(LegacyResult, ARejectionOfAnotherKindAfterTheFirstIsNotLogged) {
    g_app.readBackMismatchStreak = 2;
    Refuse();
    g_screen.deviations = {{kRed, 32, 5000}};
    EXPECT_EQ(CallsOfOneApply(), CallsOfApplying(kReadBack));
    ExpectCounts(0, 2, 3);
}

TEST_F(LegacyResult, TheLoggedValuesAreThoseOfTheApply) {
    g_app.intensity = 1.0 / 3.0;
    g_app.brightness = 0.9996;
    g_screen.acceptsRamps = false;
    ApplyLegacyRamp();
    EXPECT_EQ(g_calls[3],
              "log: Legacy ramp REJECTED (intensity=0.333 brightness=1.000) - Windows range limit");
}

TEST_F(LegacyResult, CountersAndStreakPersistWhenTheFilterIsOffAndTheIdentityIsRestored) {
    Refuse();
    ApplyWithMismatch();
    ApplyWithMismatch();
    g_app.filterOn = false;
    ApplyLegacyRamp();
    RestoreIdentityRamp();
    ExpectCounts(2, 1, 2);
    g_app.filterOn = true;
    ApplyWithMismatch();
    ExpectCounts(2, 2, 3);
}

TEST_F(LegacyResult, RestoringTheIdentityRestoresTheCursorsFirstAndIsNeitherReadBackNorCounted) {
    RestoreIdentityRamp();
    EXPECT_THAT(g_calls, ElementsAre(kRestore, "get dc", "set ramp", "release dc"));
    ExpectCounts(0, 0, 0);
}

TEST_F(LegacyResult, ARefusedIdentityIsIgnored) {
    g_screen.acceptsRamps = false;
    RestoreIdentityRamp();
    g_app.filterOn = false;
    ApplyLegacyRamp();
    EXPECT_THAT(g_calls, ElementsAre(kRestore, "get dc", "set ramp", "release dc", kRestore, "get dc",
                                     "set ramp", "release dc"));
    ExpectCounts(0, 0, 0);
    EXPECT_FALSE(g_app.lastApplyRejected);
}

TEST_F(LegacyResult, WithTheFilterOffNothingIsTinted) {
    g_app.filterOn = false;
    EXPECT_EQ(CallsOfOneApply(), Followed({kRestore}, kNotReadBack));
}

TEST_F(LegacyResult, TheIdentityDoesNotClearARejection) {
    Refuse();
    g_calls.clear();
    g_app.filterOn = false;
    ApplyLegacyRamp();
    EXPECT_TRUE(g_app.lastApplyRejected);
    EXPECT_EQ(g_calls, Followed({kRestore}, kNotReadBack));
}

TEST_F(LegacyResult, WithoutAContextTheCursorsAreRestoredAndTheIdentityIsNotSet) {
    g_screen.givesContext = false;
    RestoreIdentityRamp();
    EXPECT_THAT(g_calls, ElementsAre(kRestore, "get dc"));
}
