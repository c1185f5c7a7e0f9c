// Actions of the user: Legacy Mode on and off, and the presets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_magnification.h"
#include "filter/filter.h"
#include "filter/legacy_gamma.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);
AMBREL_USES_SEAMS(recorded_cursors);

AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save");
}

AMBREL_REPLACE(void, ApplyLegacyRamp, ()) {
    Record("ramp legacy=", g_app.useLegacyGamma);
}

AMBREL_REPLACE(void, RestoreIdentityRamp, ()) {
    Record("identity ramp legacy=", g_app.useLegacyGamma);
}

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

BOOL WINAPI FakePostMessageW(HWND, UINT message, WPARAM wParam, LPARAM) {
    Record("post ", message, " ", wParam);
    return TRUE;
}

std::uint64_t BitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

class FilterToggle : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = MakeHandle<HWND>(0x1234);
        g_magnification = FakeMagnification{};
        g_calls.clear();
    }
};

class FilterPresets : public FilterToggle {};

}  // namespace

AMBREL_SEAM(PostMessageW, FakePostMessageW);

TEST_F(FilterToggle, SwitchingOnClearsCursorsAndMatrixThenAppliesTheRamp) {
    InstallFakeMagnification();
    g_app.filterOn = true;
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, ElementsAre("restore cursors", "identity matrix", "ramp legacy=1"));
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_TRUE(g_app.magnificationReady);
}

TEST_F(FilterToggle, SwitchingOnRemovesAMatrixWhoseFirstRemovalIsRefused) {
    InstallFakeMagnification();
    g_app.filterOn = true;
    ApplyFilter();
    g_magnification.laterEffectErrors = 5;
    g_calls.clear();
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, ElementsAre("restore cursors", "identity matrix", "identity matrix",
                                     "MagUninitialize", "MagInitialize", "ramp legacy=1"));
    EXPECT_TRUE(g_app.magnificationReady);
}

TEST_F(FilterToggle, SwitchingOnDoesNotChangeTheFallbackState) {
    InstallFakeMagnification();
    g_app.consecutiveError87 = 1;
    g_app.fallbackSuppressed = true;
    ToggleLegacyMode();
    EXPECT_EQ(g_app.consecutiveError87, 1);
    EXPECT_TRUE(g_app.fallbackSuppressed);
    EXPECT_FALSE(g_app.legacyModeAutoSet);
}

TEST_F(FilterToggle, SwitchingOnByTheUserIsNotMarkedAsAutomatic) {
    ToggleLegacyMode();
    EXPECT_FALSE(g_app.legacyModeAutoSet);
    EXPECT_FALSE(g_app.fallbackSuppressed);
}

TEST_F(FilterToggle, WithTheFilterOffSwitchingOnTouchesNothing) {
    InstallFakeMagnification();
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_TRUE(g_app.useLegacyGamma);
}

TEST_F(FilterToggle, SwitchingOffRestoresTheRampWhileStillInLegacyModeThenLoadsAndSetsTheMatrix) {
    g_app.useLegacyGamma = true;
    g_app.filterOn = true;
    ToggleLegacyMode();
    EXPECT_THAT(g_calls,
                ElementsAre("restore cursors", "identity ramp legacy=1", "load Magnification.dll",
                            "find MagInitialize", "find MagUninitialize", "find MagSetFullscreenColorEffect",
                            "MagInitialize", "matrix", "tint cursors"));
    EXPECT_FALSE(g_app.useLegacyGamma);
}

TEST_F(FilterToggle, SwitchingOffWithTheFilterOffOnlyLoadsTheApi) {
    g_app.useLegacyGamma = true;
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, ElementsAre("load Magnification.dll", "find MagInitialize", "find MagUninitialize",
                                     "find MagSetFullscreenColorEffect", "MagInitialize"));
}

TEST_F(FilterToggle, SwitchingOffWithTheApiInitialisedLoadsNothing) {
    InstallFakeMagnification();
    g_app.useLegacyGamma = true;
    g_app.filterOn = true;
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, ElementsAre("restore cursors", "identity ramp legacy=1", "matrix", "tint cursors"));
}

TEST_F(FilterToggle, SwitchingOffWithTheFilterOffAndTheApiInitialisedCallsNothing) {
    InstallFakeMagnification();
    g_app.useLegacyGamma = true;
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_FALSE(g_app.useLegacyGamma);
}

TEST_F(FilterToggle, SwitchingOffSuppressesTheFallback) {
    InstallFakeMagnification();
    g_app.useLegacyGamma = true;
    g_app.legacyModeAutoSet = true;
    g_app.consecutiveError87 = 1;
    ToggleLegacyMode();
    EXPECT_FALSE(g_app.legacyModeAutoSet);
    EXPECT_TRUE(g_app.fallbackSuppressed);
    EXPECT_EQ(g_app.consecutiveError87, 0);
}

TEST_F(FilterToggle, TheFallbackStaysSuppressedThroughLaterSwitching) {
    InstallFakeMagnification();
    g_app.filterOn = true;
    g_app.useLegacyGamma = true;
    ToggleLegacyMode();
    ToggleLegacyMode();
    EXPECT_TRUE(g_app.fallbackSuppressed);
    ToggleLegacyMode();
    g_magnification.laterEffectErrors = 87;
    g_calls.clear();
    for (int i = 0; i < 4; ++i)
        ApplyFilter();
    EXPECT_THAT(g_calls,
                ElementsAre("matrix", "restore cursors", "post 32874 87", "matrix", "restore cursors",
                            "matrix", "restore cursors", "matrix", "restore cursors"));
    EXPECT_FALSE(g_app.useLegacyGamma);
}

TEST_F(FilterToggle, LeavingAnAutomaticLegacyModeNeedsNoReload) {
    InstallFakeMagnification();
    g_app.filterOn = true;
    g_magnification.effectErrors = {87, 87};
    ApplyFilter();
    ApplyFilter();
    ASSERT_TRUE(g_app.useLegacyGamma);
    g_calls.clear();
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, ElementsAre("restore cursors", "identity ramp legacy=1", "matrix", "tint cursors"));
}

TEST_F(FilterToggle, WhenTheApiCannotBeLoadedTheBoxIsShownAndNothingIsApplied) {
    g_app.useLegacyGamma = true;
    g_app.filterOn = true;
    g_magnification.loadError = ERROR_MOD_NOT_FOUND;
    ToggleLegacyMode();
    EXPECT_THAT(
        g_calls,
        ElementsAre("restore cursors", "identity ramp legacy=1", "load Magnification.dll",
                    "box owner=0 flags=16 [Ambrel] Failed to load Magnification.dll\nError code: 126"));
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_TRUE(g_app.filterOn);
}

TEST_F(FilterToggle, WithoutTheApiSwitchingOnStillWorks) {
    g_app.filterOn = true;
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, ElementsAre("restore cursors", "ramp legacy=1"));
}

TEST_F(FilterPresets, SetTheirPairSwitchTheFilterOnApplyRefreshAndScheduleASave) {
    InstallFakeMagnification();
    for (const FilterPreset preset : {FilterPreset::Day, FilterPreset::Evening, FilterPreset::Night}) {
        g_app.filterOn = false;
        g_calls.clear();
        ApplyPreset(preset);
        EXPECT_TRUE(g_app.filterOn);
        EXPECT_THAT(g_calls,
                    ElementsAre("matrix", "tint cursors", "refresh", "kill timer 1", "set timer 1 500"));
    }
}

TEST_F(FilterPresets, HaveTheIntensitiesToTheLastBit) {
    ApplyPreset(FilterPreset::Day);
    EXPECT_EQ(BitsOf(g_app.intensity), BitsOf(0.3846153846153846));
    EXPECT_EQ(g_app.brightness, 1.0);
    ApplyPreset(FilterPreset::Evening);
    EXPECT_EQ(BitsOf(g_app.intensity), BitsOf(0.5846153846153845));
    EXPECT_EQ(g_app.brightness, 0.85);
    ApplyPreset(FilterPreset::Night);
    EXPECT_EQ(BitsOf(g_app.intensity), BitsOf(1.0));
    EXPECT_EQ(g_app.brightness, 0.7);
}

TEST_F(FilterPresets, GoThroughTheRampInLegacyMode) {
    g_app.useLegacyGamma = true;
    ApplyPreset(FilterPreset::Evening);
    EXPECT_THAT(g_calls, ElementsAre("ramp legacy=1", "refresh", "kill timer 1", "set timer 1 500"));
}

TEST_F(FilterPresets, NoPresetDoesNothing) {
    InstallFakeMagnification();
    ApplyPreset(FilterPreset::None);
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_FALSE(g_app.filterOn);
    EXPECT_EQ(g_app.intensity, 0.385);
}

TEST_F(FilterPresets, PickedTwiceOnRefusingHardwareSwitchToLegacyMode) {
    InstallFakeMagnification();
    g_magnification.laterEffectErrors = 87;
    ApplyPreset(FilterPreset::Day);
    EXPECT_THAT(g_calls, Not(Contains("save")));
    g_calls.clear();
    ApplyPreset(FilterPreset::Day);
    EXPECT_THAT(g_calls, ElementsAre("matrix", "restore cursors",
                                     "log: Auto-fallback to Legacy Mode after 2 consecutive error 87s",
                                     "save", "ramp legacy=1", "refresh", "post 32872 0", "refresh",
                                     "kill timer 1", "set timer 1 500"));
}
