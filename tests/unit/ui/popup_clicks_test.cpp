// The action of a press on each region of the main panel.
#include <bit>
#include <cstdint>

#include "ui/click_fixture.h"

namespace {

using PopupClicks = ClickTest;

const CallRecord kMatrixThenDebouncedSave = {"matrix", "tint cursors", "refresh", "kill 1", "set 1 500"};

}  // namespace

TEST_F(PopupClicks, PowerTurnsTheFilterOnAppliesRefreshesAndSchedulesTheSave) {
    Press(kPower);
    EXPECT_TRUE(g_app.filterOn);
    EXPECT_EQ(g_calls, kMatrixThenDebouncedSave);
    EXPECT_EQ(g_fixture.atApply, (Snapshot{0.385, 1.0, true, false, false, false}));
}

TEST_F(PopupClicks, PowerTurnsTheFilterOff) {
    g_app.filterOn = true;
    Press(kPower);
    EXPECT_FALSE(g_app.filterOn);
    EXPECT_EQ(g_calls, (CallRecord{"restore cursors", "identity matrix", "refresh", "kill 1", "set 1 500"}));
}

TEST_F(PopupClicks, PowerInLegacyModeUsesTheRamp) {
    g_app.useLegacyGamma = true;
    Press(kPower);
    EXPECT_EQ(g_calls, (CallRecord{"ramp", "refresh", "kill 1", "set 1 500"}));
    g_calls.clear();
    Press(kPower);
    EXPECT_EQ(g_calls, (CallRecord{"restore cursors", "identity ramp", "refresh", "kill 1", "set 1 500"}));
}

TEST_F(PopupClicks, PowerDoesNotChangeWarmthAndBrightness) {
    g_app.intensity = 0.7;
    g_app.brightness = 0.3;
    Press(kPower);
    Press(kPower);
    EXPECT_EQ(g_app.intensity, 0.7);
    EXPECT_EQ(g_app.brightness, 0.3);
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(PopupClicks, DaySetsItsPairAndTurnsTheFilterOn) {
    g_app.brightness = 0.4;
    Press(kDay);
    EXPECT_EQ(g_calls, kMatrixThenDebouncedSave);
    EXPECT_EQ(g_fixture.atApply, (Snapshot{0.3846153846153846, 1.0, true, false, false, false}));
    EXPECT_EQ(Now(), g_fixture.atApply);
}

TEST_F(PopupClicks, EveningSetsItsPairToTheBit) {
    Press(kEvening);
    EXPECT_EQ(g_calls, kMatrixThenDebouncedSave);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(g_fixture.atApply.intensity), 0x3FE2B52B52B52B52U);
    EXPECT_EQ(g_fixture.atApply.brightness, 0.85);
    EXPECT_TRUE(g_fixture.atApply.filterOn);
}

TEST_F(PopupClicks, NightSetsItsPair) {
    g_app.useLegacyGamma = true;
    Press(kNight);
    EXPECT_EQ(g_calls, (CallRecord{"ramp", "refresh", "kill 1", "set 1 500"}));
    EXPECT_EQ(g_fixture.atApply, (Snapshot{1.0, 0.7, true, true, false, false}));
}

TEST_F(PopupClicks, APresetWithTheFilterOnKeepsItOn) {
    g_app.filterOn = true;
    Press(kDay);
    EXPECT_TRUE(g_app.filterOn);
    EXPECT_EQ(g_calls, kMatrixThenDebouncedSave);
}

TEST_F(PopupClicks, APressInTheGapBetweenTwoPresetsDoesNothing) {
    const Snapshot before = Now();
    Press({115, 447});
    Press({205, 447});
    EXPECT_TRUE(g_calls.empty());
    EXPECT_EQ(Now(), before);
}

TEST_F(PopupClicks, APressOutsideEveryRegionDoesNothing) {
    for (const POINT point : {POINT{5, 5}, POINT{160, 200}, POINT{160, 342}, POINT{160, 535}, POINT{-1, -1},
                              POINT{32767, 32767}, POINT{-32768, -32768}}) {
        Press(point);
    }
    OpenSettings();
    for (const POINT point :
         {POINT{160, 30}, POINT{160, 178}, POINT{160, 228}, POINT{160, 400}, POINT{5, 540}}) {
        Press(point);
    }
    EXPECT_TRUE(g_calls.empty());
    EXPECT_EQ(g_app.panel, Panel::Settings);
}

TEST_F(PopupClicks, APressOnAButtonStartsNoDrag) {
    Press(kPower);
    Press(kDay);
    EXPECT_EQ(g_app.dragSlider, Slider::None);
    for (const std::string& call : g_calls)
        EXPECT_NE(call, "capture");
}

TEST_F(PopupClicks, ThePositionIsConvertedAtTheMonitorsDpi) {
    g_app.dpi = 192;
    Press({320, 1006});
    EXPECT_TRUE(g_app.filterOn);
    Press({160, 503});
    EXPECT_TRUE(g_app.filterOn) << "that pixel is (80,252), in the WARMTH track";
    EXPECT_EQ(g_app.dragSlider, Slider::Warmth);
    g_app.dpi = 0;
    Press(kPower);
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(PopupClicks, APressOnTheCardUnderTheBannerDoesNotToggleIt) {
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = true;
    g_app.pwmTargetsPresent = true;
    Press(kCard);
    Press({160, 415});
    EXPECT_FALSE(g_app.pwmSafe);
    EXPECT_EQ(g_calls, (CallRecord{"gamma fix"})) << "from the part that the banner covers";
}

TEST_F(PopupClicks, TheGearShowsTheSettingsPanelAndRefreshes) {
    Press(kGear);
    EXPECT_EQ(g_app.panel, Panel::Settings);
    EXPECT_EQ(g_fixture.panelAtRefresh, Panel::Settings);
    EXPECT_EQ(g_calls, (CallRecord{"refresh"}));
}

TEST_F(PopupClicks, TheBannerStartsTheFixInBothItsTextsAndRefreshesNothing) {
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = true;
    Press(kBanner);
    EXPECT_EQ(g_calls, (CallRecord{"gamma fix"}));
    g_calls.clear();
    g_app.gammaRangeExpanded = true;
    Press(kBanner);
    EXPECT_EQ(g_calls, (CallRecord{"gamma fix"}));
}

TEST_F(PopupClicks, ABannerThatIsClickedAgainWhileTheFixIsPendingStartsItAgain) {
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = true;
    g_app.gammaFixPending = true;
    Press(kBanner);
    Press(kBanner);
    EXPECT_EQ(g_calls, (CallRecord{"gamma fix", "gamma fix"}));
}

TEST_F(PopupClicks, ABannerThatIsNotShownStartsNothing) {
    Press(kBanner);
    g_app.lastApplyRejected = true;
    Press(kBanner);
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = false;
    Press(kBanner);
    EXPECT_TRUE(g_calls.empty());
    // Withdrawn, because the restart after 1970 did not help.
    g_app.lastApplyRejected = true;
    g_app.gammaRangeExpanded = true;
    g_app.gammaFixEpoch = 1;
    Press(kBanner);
    EXPECT_EQ(g_calls, (CallRecord{"log"}));
}

TEST_F(PopupClicks, TheHintIsNotClickable) {
    Press({160, 395});
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupClicks, TheCardTogglesTheModeOnceAndRefreshes) {
    g_app.pwmTargetsPresent = true;
    Press(kCard);
    EXPECT_EQ(g_calls, (CallRecord{"toggle", "refresh"}));
}
