#include "app/state/app_state.h"
#include "app/state/dpi.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

class Scaling : public testing::Test {
protected:
    void SetUp() override { g_app = AppState{}; }
    void TearDown() override { g_app = AppState{}; }
};

}  // namespace

TEST(AppStateDefaults, TheShellStartsWithoutWindowIconOrPopup) {
    const AppState state;
    EXPECT_EQ(state.instance, nullptr);
    EXPECT_EQ(state.mainWindow, nullptr);
    EXPECT_EQ(state.singleInstanceMutex, nullptr);
    EXPECT_EQ(state.taskbarCreatedMessage, 0u);
    EXPECT_EQ(state.dpi, 96u);
    EXPECT_EQ(state.startTick, 0u);
    EXPECT_FALSE(state.trayIconAdded);
    EXPECT_EQ(state.trayRetryCount, 0);
    EXPECT_FALSE(state.popupShown);
    EXPECT_FALSE(state.popupArmed);
    EXPECT_FALSE(state.menuTracking);
    EXPECT_EQ(state.popupHiddenAt, 0u);
    EXPECT_EQ(state.panel, Panel::Main);
    EXPECT_EQ(state.dragSlider, Slider::None);
    EXPECT_EQ(state.dragStartY, 0);
    EXPECT_EQ(state.dragStartValue, 0.0);
    EXPECT_EQ(state.copiedUntil, 0u);
    EXPECT_EQ(state.settingsPath, L"");
    EXPECT_FALSE(state.launchAtStart);

    NOTIFYICONDATAW zero;
    std::memset(&zero, 0, sizeof(zero));
    EXPECT_EQ(std::memcmp(&state.trayIconData, &zero, sizeof(zero)), 0);
}

TEST(AppStateDefaults, TheFilterStartsOffAtItsFreshSettings) {
    const AppState state;
    EXPECT_FALSE(state.filterOn);
    EXPECT_EQ(state.intensity, 0.385);
    EXPECT_EQ(state.brightness, 1.0);
    EXPECT_FALSE(state.allowExtremeDim);
    EXPECT_FALSE(state.useLegacyGamma);
    EXPECT_FALSE(state.legacyModeAutoSet);
    EXPECT_FALSE(state.fallbackSuppressed);
    EXPECT_EQ(state.consecutiveError87, 0);
    EXPECT_EQ(state.magnificationModule, nullptr);
    EXPECT_EQ(state.magInitialize, nullptr);
    EXPECT_EQ(state.magUninitialize, nullptr);
    EXPECT_EQ(state.magSetFullscreenColorEffect, nullptr);
    EXPECT_FALSE(state.magnificationReady);
    EXPECT_FALSE(state.failureNoticeShown);
    EXPECT_EQ(state.rampsAccepted, 0);
    EXPECT_EQ(state.rampsRejected, 0);
    EXPECT_EQ(state.readBackMismatchStreak, 0);
    EXPECT_FALSE(state.lastApplyRejected);
    EXPECT_FALSE(state.gammaRangeExpanded);
    EXPECT_FALSE(state.gammaFixPending);
    EXPECT_EQ(state.gammaFixDeadline, 0u);
    EXPECT_EQ(state.gammaFixEpoch, 0u);
    EXPECT_FALSE(state.bannerDemotedLogged);
}

TEST(AppStateDefaults, HardwareBrightnessStartsOffWithNoDisplayKnown) {
    const AppState state;
    EXPECT_FALSE(state.pwmSafe);
    EXPECT_FALSE(state.pwmTargetsPresent);
    EXPECT_FALSE(state.pwmBuiltInOnly);
    EXPECT_FALSE(state.pwmLockConfirmed);
    EXPECT_FALSE(state.pwmVerifyPending);
    EXPECT_FALSE(state.pwmVerifyIsUserToggle);
    EXPECT_EQ(state.pwmTargetCount, 0);
    EXPECT_EQ(state.pwmTargetsAt100, 0);
    EXPECT_FALSE(state.pwmPendingLogged);
    EXPECT_EQ(state.pwmRetryCount, 0);
    EXPECT_FALSE(state.pwmRetrySlowed);
    EXPECT_TRUE(state.pwmSavedBrightness.empty());
}

TEST(AppStateDefaults, TheSavedBrightnessIsOrderedByCodeUnitsWithThePrefixFirst) {
    AppState state;
    state.pwmSavedBrightness = {{L"b", 1}, {L"a\u00e9", 2}, {L"ab", 3}, {L"a", 4}, {L"B", 5}};
    std::wstring order;
    for (const auto& entry : state.pwmSavedBrightness)
        order += entry.first + L"|";
    EXPECT_EQ(order, L"B|a|ab|a\u00e9|b|");
}

TEST(AppStateDefaults, TheRecordExistsBeforeStartUpWithItsDefaults) {
    EXPECT_EQ(g_app.dpi, 96u);
    EXPECT_EQ(g_app.intensity, 0.385);
    EXPECT_EQ(g_app.brightness, 1.0);
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(Scaling, AtNinetySixDpiAUnitIsAPixel) {
    EXPECT_EQ(ScaleByDpi(320), 320);
    EXPECT_EQ(UnscaleForDpi(320), 320);
}

TEST_F(Scaling, UnitsGrowWithTheDpi) {
    g_app.dpi = 120;
    EXPECT_EQ(ScaleByDpi(320), 400);
    EXPECT_EQ(ScaleByDpi(540), 675);
    g_app.dpi = 144;
    EXPECT_EQ(ScaleByDpi(320), 480);
    EXPECT_EQ(ScaleByDpi(540), 810);
    g_app.dpi = 192;
    EXPECT_EQ(ScaleByDpi(320), 640);
    EXPECT_EQ(ScaleByDpi(540), 1080);
}

TEST_F(Scaling, PixelsShrinkWithTheDpi) {
    g_app.dpi = 120;
    EXPECT_EQ(UnscaleForDpi(400), 320);
    g_app.dpi = 144;
    EXPECT_EQ(UnscaleForDpi(810), 540);
    g_app.dpi = 192;
    EXPECT_EQ(UnscaleForDpi(1080), 540);
}

TEST_F(Scaling, HalvesAreRoundedAwayFromZero) {
    g_app.dpi = 144;
    EXPECT_EQ(ScaleByDpi(1), 2);     // 1.5
    EXPECT_EQ(ScaleByDpi(3), 5);     // 4.5
    EXPECT_EQ(ScaleByDpi(-1), -2);   // -1.5
    EXPECT_EQ(UnscaleForDpi(1), 1);  // 0.67
    EXPECT_EQ(UnscaleForDpi(2), 1);  // 1.33
    g_app.dpi = 192;
    EXPECT_EQ(UnscaleForDpi(1), 1);    // 0.5
    EXPECT_EQ(UnscaleForDpi(3), 2);    // 1.5
    EXPECT_EQ(UnscaleForDpi(-1), -1);  // -0.5
}

TEST_F(Scaling, QuartersAreRoundedToTheNearest) {
    g_app.dpi = 120;
    EXPECT_EQ(ScaleByDpi(1), 1);  // 1.25
    EXPECT_EQ(ScaleByDpi(3), 4);  // 3.75
    EXPECT_EQ(ScaleByDpi(2), 3);  // 2.5
}

TEST_F(Scaling, ADpiOfZeroIsTreatedAs96) {
    g_app.dpi = 0;
    EXPECT_EQ(ScaleByDpi(37), 37);
    EXPECT_EQ(UnscaleForDpi(37), 37);
}

TEST_F(Scaling, ZeroStaysZeroAndASignIsKept) {
    g_app.dpi = 168;
    EXPECT_EQ(ScaleByDpi(0), 0);
    EXPECT_EQ(UnscaleForDpi(0), 0);
    EXPECT_EQ(ScaleByDpi(-100), -175);
    EXPECT_EQ(UnscaleForDpi(-175), -100);
}

TEST_F(Scaling, AProductBeyond32BitsDoesNotOverflow) {
    g_app.dpi = 192;
    EXPECT_EQ(ScaleByDpi(1000000000), 2000000000);
    EXPECT_EQ(UnscaleForDpi(2000000000), 1000000000);
}
