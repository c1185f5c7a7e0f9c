// Legacy Mode on an extended desktop. The entire screen's context refuses every ramp there, while the context
// of each display accepts it. Some displays refuse all ramps.
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

const std::string kFirst = "\\\\.\\DISPLAY1";
const std::string kSecond = "\\\\.\\DISPLAY2";
const std::string kRefused =
    "log: Legacy ramp REJECTED (intensity=0.500 brightness=0.250) - Windows range limit";
const std::string kReadWrong =
    "log: Legacy ramp REJECTED (intensity=0.500 brightness=0.250) (read-back mismatch streak) - Windows "
    "range "
    "limit";

FakeDisplay Display(int number, Accepts accepts = Accepts::Everything) {
    FakeDisplay display = NamedDisplay(number);
    display.accepts = accepts;
    return display;
}

FakeDisplay DisplayInState(int number, DWORD state) {
    FakeDisplay display = Display(number);
    display.state = state;
    return display;
}

CallRecord Joined(std::initializer_list<CallRecord> parts) {
    CallRecord all;
    for (const CallRecord& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

const CallRecord kWholeScreen = {"get dc", "set ramp", "release dc"};

CallRecord Loaded(const std::string& name) {
    return {"create dc of " + name, "set ramp of " + name, "read ramp of " + name, "delete dc of " + name};
}

CallRecord Identity(const std::string& name) {
    return {"create dc of " + name, "set ramp of " + name, "delete dc of " + name};
}

class LegacyDisplays : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_app.useLegacyGamma = true;
        g_app.intensity = 0.5;
        g_app.brightness = 0.25;
        g_model = FakeModel{};
        g_model.green = 0.5;
        g_screen = FakeScreen{};
        g_screen.acceptsRamps = false;
        g_calls.clear();
    }

    void TearDown() override { EXPECT_EQ(g_screen.contextsHeld, 0) << "a device context is kept"; }

    static void Connect(std::vector<FakeDisplay> displays) { g_screen.displays = std::move(displays); }

    static FakeDisplay& At(std::size_t index) { return g_screen.displays[index]; }

    static bool ShowsTheFilter(std::size_t index) { return At(index).shown == g_screen.seen.back(); }

    static void ExpectAccepted() {
        ApplyLegacyRamp();
        EXPECT_EQ(g_app.rampsAccepted, 1);
        EXPECT_EQ(g_app.rampsRejected, 0);
        EXPECT_FALSE(g_app.lastApplyRejected);
    }

    static void ExpectRejected() {
        ApplyLegacyRamp();
        EXPECT_EQ(g_app.rampsAccepted, 0);
        EXPECT_EQ(g_app.rampsRejected, 1);
        EXPECT_TRUE(g_app.lastApplyRejected);
        EXPECT_THAT(g_calls, testing::Contains(kRefused));
    }
};

}  // namespace

TEST_F(LegacyDisplays, BothDisplaysGetTheRampThatTheEntireScreenRefuses) {
    Connect({Display(1), Display(2)});
    ExpectAccepted();
    EXPECT_EQ(g_calls, Joined({kWholeScreen, Loaded(kFirst), Loaded(kSecond), {"tint cursors"}}));
    EXPECT_TRUE(ShowsTheFilter(0));
    EXPECT_TRUE(ShowsTheFilter(1));
    EXPECT_EQ(At(0).shown.channels[kRed][255], 16383);  // a quarter of 65535
    EXPECT_EQ(At(1).shown.channels[kGreen][255], 8191);
}

TEST_F(LegacyDisplays, ARampThatTheEntireScreenAcceptsIsNotRepeatedOnEachDisplay) {
    g_screen.acceptsRamps = true;
    Connect({Display(1), Display(2)});
    ExpectAccepted();
    EXPECT_THAT(g_calls, ElementsAre("get dc", "set ramp", "read ramp", "release dc", "tint cursors"));
}

TEST_F(LegacyDisplays, ASingleDisplaysRefusalIsARejection) {
    Connect({Display(1)});
    ExpectRejected();
    EXPECT_EQ(g_calls, Joined({kWholeScreen, {kRefused, "refresh", "tint cursors"}}));
}

TEST_F(LegacyDisplays, OnlyDevicesThatShowTheDesktopAreDisplays) {
    Connect({DisplayInState(1, 0), Display(2),
             DisplayInState(3, DISPLAY_DEVICE_ATTACHED_TO_DESKTOP | DISPLAY_DEVICE_MIRRORING_DRIVER)});
    ExpectRejected();
    EXPECT_EQ(g_calls, Joined({kWholeScreen, {kRefused, "refresh", "tint cursors"}}));
}

TEST_F(LegacyDisplays, AnInactiveDisplayBetweenTwoActiveOnesIsSkipped) {
    Connect({Display(1), DisplayInState(7, 0),
             DisplayInState(8, DISPLAY_DEVICE_ATTACHED_TO_DESKTOP | DISPLAY_DEVICE_MIRRORING_DRIVER),
             Display(2)});
    ExpectAccepted();
    EXPECT_EQ(g_calls, Joined({kWholeScreen, Loaded(kFirst), Loaded(kSecond), {"tint cursors"}}));
}

TEST_F(LegacyDisplays, ADisplayThatRefusesThisRampAloneIsARejection) {
    Connect({Display(1), Display(2, Accepts::IdentityOnly)});
    ExpectRejected();
}

TEST_F(LegacyDisplays, ADisplayThatRefusesThisRampKeepsItsCurrentOne) {
    Connect({Display(1, Accepts::IdentityOnly), Display(2)});
    At(0).shown.channels[kBlue][128] = 1000;
    const Ramp before = At(0).shown;
    ExpectRejected();
    EXPECT_TRUE(At(0).shown == before) << "asking whether it accepts any ramp may not change it";
}

TEST_F(LegacyDisplays, ADisplayThatRefusesItsOwnRampButNotTheIdentityIsARejection) {
    Connect({Display(1), Display(2, Accepts::IdentityOnly)});
    At(1).shown.channels[kRed][255] = 7;
    At(1).takesItsRampAgain = false;
    ExpectRejected();
}

TEST_F(LegacyDisplays, ADisplayThatRefusesEvenTheIdentityIsSkipped) {
    Connect({Display(1), Display(2, Accepts::Nothing), Display(3)});
    ExpectAccepted();
    EXPECT_TRUE(ShowsTheFilter(0));
    EXPECT_TRUE(ShowsTheFilter(2));
    EXPECT_EQ(At(1).loads, 0);
}

TEST_F(LegacyDisplays, ADisplayWithoutRampsIsProbedOnceAndThenOnlyTried) {
    Connect({Display(1), Display(2, Accepts::Nothing)});
    ApplyLegacyRamp();
    const auto attempts = testing::Contains("set ramp of " + kSecond);
    EXPECT_THAT(g_calls, attempts.Times(3)) << "the filter's ramp, the current one and the identity";
    g_calls.clear();
    ApplyLegacyRamp();
    EXPECT_THAT(g_calls, attempts.Times(1));
    EXPECT_EQ(g_app.rampsAccepted, 2);
}

TEST_F(LegacyDisplays, ADisplayWithoutRampsIsProbedAgainAfterADisplayChange) {
    Connect({Display(1), Display(2, Accepts::Nothing)});
    ApplyLegacyRamp();
    At(1).accepts = Accepts::IdentityOnly;
    g_app.displaysWithoutRamps = 0;
    ApplyLegacyRamp();
    EXPECT_EQ(g_app.rampsRejected, 1);
}

TEST_F(LegacyDisplays, ADisplayThatAcceptsRampsAfterAllIsLoaded) {
    Connect({Display(1), Display(2, Accepts::Nothing)});
    ApplyLegacyRamp();
    At(1).accepts = Accepts::Everything;
    ApplyLegacyRamp();
    EXPECT_TRUE(ShowsTheFilter(1));
}

TEST_F(LegacyDisplays, ADisplayThatCannotBeReadAndRefusesEvenTheIdentityIsSkipped) {
    Connect({Display(1, Accepts::Nothing), Display(2)});
    At(0).canBeRead = false;
    ExpectAccepted();
}

TEST_F(LegacyDisplays, ADisplayThatCannotBeReadAndAcceptsTheIdentityAloneIsARejection) {
    Connect({Display(1, Accepts::IdentityOnly), Display(2)});
    At(0).canBeRead = false;
    ExpectRejected();
}

TEST_F(LegacyDisplays, WhenAllRefuseEvenTheIdentityTheRampIsRejected) {
    Connect({Display(1, Accepts::Nothing), Display(2, Accepts::Nothing)});
    ExpectRejected();
}

TEST_F(LegacyDisplays, ASkippedDisplayDoesNotHideTheRefusalOfAnother) {
    Connect({Display(1, Accepts::Nothing), Display(2), Display(3, Accepts::IdentityOnly)});
    ExpectRejected();
}

TEST_F(LegacyDisplays, ADisplayWithoutAContextIsSkipped) {
    Connect({Display(1), Display(2)});
    At(0).givesContext = false;
    ExpectAccepted();
    EXPECT_TRUE(ShowsTheFilter(1));
    EXPECT_EQ(g_calls, Joined({kWholeScreen, {"create dc of " + kFirst}, Loaded(kSecond), {"tint cursors"}}));
}

TEST_F(LegacyDisplays, EachIsReadBackAndOneThatDiffersCountsAsOneMismatch) {
    for (const std::size_t wrong : {0U, 1U, 2U}) {
        g_app.readBackMismatchStreak = 0;
        Connect({Display(1), Display(2), Display(3)});
        At(wrong).deviations = {{kGreen, 240, 2049}};
        ApplyLegacyRamp();
        EXPECT_EQ(g_app.readBackMismatchStreak, 1) << wrong;
    }
    Connect({Display(1), Display(2), Display(3)});
    At(0).deviations = At(1).deviations = {{kGreen, 240, 2049}};
    ApplyLegacyRamp();
    EXPECT_EQ(g_app.readBackMismatchStreak, 2) << "two displays, one apply";
    EXPECT_EQ(g_app.rampsRejected, 0);
    ApplyLegacyRamp();
    EXPECT_EQ(g_app.rampsRejected, 1);
    EXPECT_THAT(g_calls, testing::Contains(kReadWrong));
}

TEST_F(LegacyDisplays, WhenAllMatchTheStreakOfMismatchesEnds) {
    Connect({Display(1), Display(2)});
    At(1).deviations = {{kRed, 16, 2048}};
    g_app.readBackMismatchStreak = 2;
    ExpectAccepted();
    EXPECT_EQ(g_app.readBackMismatchStreak, 0);
}

TEST_F(LegacyDisplays, ADisplayThatCannotBeReadIsTreatedAsMatching) {
    Connect({Display(1), Display(2)});
    At(0).canBeRead = false;
    g_app.readBackMismatchStreak = 2;
    ExpectAccepted();
    EXPECT_EQ(g_app.readBackMismatchStreak, 0);
}

TEST_F(LegacyDisplays, TheIdentityReachesEachDisplayEvenIfOthersRefuseIt) {
    Connect({Display(1), Display(2, Accepts::Nothing), Display(3)});
    ApplyLegacyRamp();
    g_calls.clear();
    RestoreIdentityRamp();
    EXPECT_EQ(g_calls, Joined({{"restore cursors"},
                               kWholeScreen,
                               Identity(kFirst),
                               Identity(kSecond),
                               Identity("\\\\.\\DISPLAY3")}));
    EXPECT_TRUE(At(0).shown == IdentityRamp());
    EXPECT_TRUE(At(2).shown == IdentityRamp());
    EXPECT_EQ(g_app.rampsAccepted, 1) << "the identity is not counted";
}

TEST_F(LegacyDisplays, TheIdentityIsTriedAgainAtTheEndIfWindowsProvidesNoContextOfADisplay) {
    Connect({Display(1), Display(2)});
    ApplyLegacyRamp();
    g_app.ending = true;
    At(1).contextsRefused = 1;
    RestoreIdentityRamp();
    EXPECT_TRUE(At(0).shown == IdentityRamp());
    EXPECT_TRUE(At(1).shown == IdentityRamp());
}

TEST_F(LegacyDisplays, TheIdentityOfASingleDisplayIsSetOnceAndItsRefusalIgnored) {
    Connect({Display(1)});
    RestoreIdentityRamp();
    EXPECT_EQ(g_calls, Joined({{"restore cursors"}, kWholeScreen}));
}

TEST_F(LegacyDisplays, AnIdentityThatTheEntireScreenAcceptsIsNotRepeated) {
    g_screen.acceptsRamps = true;
    Connect({Display(1), Display(2)});
    RestoreIdentityRamp();
    EXPECT_EQ(g_calls, Joined({{"restore cursors"}, kWholeScreen}));
}

TEST_F(LegacyDisplays, TheIdentityReachesEachDisplayThatHasTheFiltersRampEvenIfTheEntireScreenAcceptsIt) {
    Connect({Display(1), Display(2)});
    ApplyLegacyRamp();
    g_screen.acceptsRamps = true;
    RestoreIdentityRamp();
    EXPECT_TRUE(At(0).shown == IdentityRamp());
    EXPECT_TRUE(At(1).shown == IdentityRamp());
    g_calls.clear();
    RestoreIdentityRamp();
    EXPECT_EQ(g_calls, Joined({{"restore cursors"}, kWholeScreen})) << "once is enough";
}

TEST_F(LegacyDisplays, WithoutAScreenContextTheIdentityIsNotTriedElsewhere) {
    g_screen.givesContext = false;
    Connect({Display(1), Display(2)});
    RestoreIdentityRamp();
    EXPECT_THAT(g_calls, ElementsAre("restore cursors", "get dc"));
}
