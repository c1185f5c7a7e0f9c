// The action of a press on each region of the settings panel.
#include "ui/click_fixture.h"

namespace {

using SettingsClicks = ClickTest;

}  // namespace

TEST_F(SettingsClicks, CloseShowsTheMainPanelQueriesTheDisplaysAndRefreshes) {
    OpenSettings();
    Press(kClose);
    EXPECT_EQ(g_app.panel, Panel::Main);
    EXPECT_EQ(g_fixture.panelAtRefresh, Panel::Main);
    EXPECT_EQ(g_calls, (CallRecord{"look at displays", "refresh"}));
}

TEST_F(SettingsClicks, LaunchAtStartupIsReversedSavedImmediatelyAndShown) {
    OpenSettings();
    Press(kLaunchRow);
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_EQ(g_calls, (CallRecord{"autostart on", "save", "refresh"}));
    EXPECT_TRUE(g_fixture.atSave.launch);
    g_calls.clear();
    Press(kLaunchRow);
    EXPECT_FALSE(g_app.launchAtStart);
    EXPECT_EQ(g_calls, (CallRecord{"autostart off", "save", "refresh"}));
    EXPECT_FALSE(g_fixture.atSave.launch);
}

TEST_F(SettingsClicks, LaunchAtStartupAppliesNoFilter) {
    OpenSettings();
    g_app.filterOn = true;
    Press(kLaunchRow);
    EXPECT_EQ(g_calls, (CallRecord{"autostart on", "save", "refresh"}));
}

TEST_F(SettingsClicks, ExtremeDimWithTheFilterOnAppliesSavesImmediatelyAndRefreshes) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.brightness = 0.1;
    Press(kExtremeDimRow);
    EXPECT_TRUE(g_app.allowExtremeDim);
    EXPECT_EQ(g_app.brightness, 0.1);
    EXPECT_EQ(g_calls, (CallRecord{"matrix", "tint cursors", "save", "refresh"}));
    EXPECT_TRUE(g_fixture.atSave.extremeDim);
}

TEST_F(SettingsClicks, LeavingExtremeDimRaisesADarkerBrightnessToTheMinimumBeforeItIsApplied) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.allowExtremeDim = true;
    g_app.brightness = 0.03;
    Press(kExtremeDimRow);
    EXPECT_EQ(g_fixture.atApply, (Snapshot{0.385, 0.1, true, false, false, false}));
    EXPECT_EQ(g_fixture.atSave, g_fixture.atApply);
    EXPECT_EQ(g_app.brightness, 0.1);
    EXPECT_EQ(g_calls, (CallRecord{"matrix", "tint cursors", "save", "refresh"}));
}

TEST_F(SettingsClicks, ExtremeDimWithTheFilterOffIsOnlySavedAndShown) {
    OpenSettings();
    g_app.allowExtremeDim = true;
    g_app.brightness = 0.0;
    Press(kExtremeDimRow);
    EXPECT_FALSE(g_app.allowExtremeDim);
    EXPECT_EQ(g_app.brightness, 0.1);
    EXPECT_EQ(g_calls, (CallRecord{"save", "refresh"}));
    EXPECT_EQ(g_fixture.atSave.brightness, 0.1);
}

TEST_F(SettingsClicks, LegacyModeOnClearsTheMatrixBeforeItFlips) {
    OpenSettings();
    g_app.filterOn = true;
    Press(kLegacyRow);
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_EQ(g_calls, (CallRecord{"restore cursors", "identity matrix", "ramp", "save", "refresh"}));
    EXPECT_FALSE(g_fixture.atClear.legacy);
    EXPECT_TRUE(g_fixture.atApply.legacy);
    EXPECT_TRUE(g_fixture.atSave.legacy);
    EXPECT_FALSE(g_app.fallbackSuppressed);
}

TEST_F(SettingsClicks, LegacyModeOffResetsTheFallbackAndInitialisesTheMagnificationApi) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.useLegacyGamma = true;
    g_app.legacyModeAutoSet = true;
    g_app.consecutiveError87 = 1;
    g_app.magnificationReady = false;
    Press(kLegacyRow);
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_FALSE(g_app.legacyModeAutoSet);
    EXPECT_TRUE(g_app.fallbackSuppressed);
    EXPECT_EQ(g_app.consecutiveError87, 0);
    EXPECT_EQ(g_calls, (CallRecord{"restore cursors", "identity ramp", "initialise", "matrix", "tint cursors",
                                   "save", "refresh"}));
    EXPECT_TRUE(g_fixture.atClear.legacy);
    EXPECT_FALSE(g_fixture.atApply.legacy);
    EXPECT_FALSE(g_fixture.atSave.legacy);
}

TEST_F(SettingsClicks, LegacyModeOffDoesNotInitialiseTwice) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.useLegacyGamma = true;
    Press(kLegacyRow);
    EXPECT_EQ(g_calls,
              (CallRecord{"restore cursors", "identity ramp", "matrix", "tint cursors", "save", "refresh"}));
}

TEST_F(SettingsClicks, LegacyModeOffIsSavedEvenWhenTheMagnificationApiFails) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.useLegacyGamma = true;
    g_app.magnificationReady = false;
    g_fixture.initialisationSucceeds = false;
    Press(kLegacyRow);
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_EQ(g_calls, (CallRecord{"restore cursors", "identity ramp", "initialise", "save", "refresh"}));
}

TEST_F(SettingsClicks, LegacyModeWithTheFilterOffTouchesNoPipelinesColour) {
    OpenSettings();
    Press(kLegacyRow);
    EXPECT_EQ(g_calls, (CallRecord{"save", "refresh"}));
    g_calls.clear();
    g_app.magnificationReady = false;
    Press(kLegacyRow);
    EXPECT_EQ(g_calls, (CallRecord{"initialise", "save", "refresh"}));
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(SettingsClicks, TheRowsKeepTheSettingsPanelOpen) {
    OpenSettings();
    Press(kLaunchRow);
    Press(kExtremeDimRow);
    Press(kLegacyRow);
    EXPECT_EQ(g_app.panel, Panel::Settings);
}

TEST_F(SettingsClicks, MainRegionsDoNotReactOnTheSettingsPanel) {
    OpenSettings();
    for (const POINT point : {kDay, kEvening, kNight, POINT{160, 525}, POINT{302, 30}})
        Press(point);
    EXPECT_TRUE(g_calls.empty());
    EXPECT_EQ(g_app.panel, Panel::Settings);
}

TEST_F(SettingsClicks, SettingsRegionsDoNotReactOnTheMainPanel) {
    for (const POINT point : {kLaunchRow, kExtremeDimRow, kLegacyRow, kClose, POINT{254, 20}}) {
        Press({160, point.y});
    }
    Press({254, 20});
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(SettingsClicks, TheGearDoesNotReactOnTheSettingsPanel) {
    OpenSettings();
    Press({302, 29});
    Press({290, 17});
    EXPECT_EQ(g_app.panel, Panel::Settings);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(SettingsClicks, TheSupportButtonCopiesTheReportAndDoesNothingElse) {
    OpenSettings();
    Press(kSupport);
    EXPECT_EQ(g_app.panel, Panel::Settings);
    EXPECT_EQ(g_calls, (CallRecord{"copy support bundle"}));
}
