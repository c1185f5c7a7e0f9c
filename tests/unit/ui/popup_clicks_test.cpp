// What a press on each region does, down to the two pipelines: the order of the calls and what AppState held
// when each was made.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/refresh.h"
#include "filter/legacy_gamma.h"
#include "filter/magnification.h"
#include "store/settings.h"
#include "support/seam.h"
#include "ui/popup_input.h"

namespace {

using Calls = std::vector<std::string>;

Calls g_calls;
bool g_initialisationSucceeds = true;
HWND const kWindow = reinterpret_cast<HWND>(0x1234);

struct Snapshot {
    double intensity;
    double brightness;
    bool filterOn;
    bool legacy;
    bool extremeDim;

    bool operator==(const Snapshot&) const = default;
};

Snapshot Now() {
    return {g_app.intensity, g_app.brightness, g_app.filterOn, g_app.useLegacyGamma, g_app.allowExtremeDim};
}

Snapshot g_atApply;
Snapshot g_atSave;
Snapshot g_atClear;
Panel g_panelAtRefresh;

UINT_PTR WINAPI FakeSetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC) {
    EXPECT_EQ(window, kWindow);
    g_calls.push_back("set " + std::to_string(id) + " " + std::to_string(period));
    return id;
}

BOOL WINAPI FakeKillTimer(HWND, UINT_PTR id) {
    g_calls.push_back("kill " + std::to_string(id));
    return TRUE;
}

HWND WINAPI FakeSetCapture(HWND) {
    g_calls.push_back("capture");
    return nullptr;
}

class PopupClicks : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_app.magnificationReady = true;
        g_initialisationSucceeds = true;
        g_calls.clear();
        g_atApply = g_atSave = g_atClear = Snapshot{};
        g_panelAtRefresh = Panel::Main;
    }

    void OpenSettings() { g_app.panel = Panel::Settings; }
};

constexpr POINT kDay = {70, 447};
constexpr POINT kEvening = {160, 447};
constexpr POINT kNight = {250, 447};
constexpr POINT kPower = {160, 503};
constexpr POINT kClose = {276, 30};
constexpr POINT kLaunchRow = {160, 153};
constexpr POINT kExtremeDimRow = {160, 203};
constexpr POINT kLegacyRow = {160, 253};
constexpr POINT kSupport = {160, 489};

void Press(POINT point) {
    OnMouseDown(point.x, point.y);
}

const Calls kMatrixThenDebouncedSave = {"matrix", "refresh", "kill 1", "set 1 500"};

}  // namespace

AMBREL_SEAM(SetTimer, FakeSetTimer);
AMBREL_SEAM(KillTimer, FakeKillTimer);
AMBREL_SEAM(SetCapture, FakeSetCapture);

void InitMagnification() {
    g_calls.push_back("initialise");
    g_app.magnificationReady = g_initialisationSucceeds;
}
void ShutdownMagnification() {
    g_calls.push_back("shut down");
}
bool IsMagnificationUsable() {
    return g_app.magnificationReady;
}
MatrixResult SetFilterMatrix() {
    g_calls.push_back("matrix");
    g_atApply = Now();
    return {true, 0};
}
void SetIdentityMatrix() {
    g_calls.push_back("identity matrix");
    g_atClear = Now();
}
void ApplyLegacyRamp() {
    g_calls.push_back("ramp");
    g_atApply = Now();
}
void RestoreIdentityRamp() {
    g_calls.push_back("identity ramp");
    g_atClear = Now();
}
void RefreshPopupAndTray() {
    g_calls.push_back("refresh");
    g_panelAtRefresh = g_app.panel;
}
void SaveSettings() {
    g_calls.push_back("save");
    g_atSave = Now();
}
void LogFormatted(const wchar_t*, ...) {
    g_calls.push_back("log");
}

TEST_F(PopupClicks, PowerTurnsTheFilterOnAppliesRefreshesAndSchedulesTheSave) {
    Press(kPower);
    EXPECT_TRUE(g_app.filterOn);
    EXPECT_EQ(g_calls, kMatrixThenDebouncedSave);
    EXPECT_EQ(g_atApply, (Snapshot{0.385, 1.0, true, false, false}));
}

TEST_F(PopupClicks, PowerTurnsTheFilterOff) {
    g_app.filterOn = true;
    Press(kPower);
    EXPECT_FALSE(g_app.filterOn);
    EXPECT_EQ(g_calls, (Calls{"identity matrix", "refresh", "kill 1", "set 1 500"}));
}

TEST_F(PopupClicks, PowerInLegacyModeUsesTheRamp) {
    g_app.useLegacyGamma = true;
    Press(kPower);
    EXPECT_EQ(g_calls, (Calls{"ramp", "refresh", "kill 1", "set 1 500"}));
    g_calls.clear();
    Press(kPower);
    EXPECT_EQ(g_calls, (Calls{"identity ramp", "refresh", "kill 1", "set 1 500"}));
}

TEST_F(PopupClicks, PowerLeavesWarmthAndBrightnessAlone) {
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
    EXPECT_EQ(g_atApply, (Snapshot{0.3846153846153846, 1.0, true, false, false}));
    EXPECT_EQ(Now(), g_atApply);
}

TEST_F(PopupClicks, EveningSetsItsPairToTheBit) {
    Press(kEvening);
    EXPECT_EQ(g_calls, kMatrixThenDebouncedSave);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(g_atApply.intensity), 0x3FE2B52B52B52B52U);
    EXPECT_EQ(g_atApply.brightness, 0.85);
    EXPECT_TRUE(g_atApply.filterOn);
}

TEST_F(PopupClicks, NightSetsItsPair) {
    g_app.useLegacyGamma = true;
    Press(kNight);
    EXPECT_EQ(g_calls, (Calls{"ramp", "refresh", "kill 1", "set 1 500"}));
    EXPECT_EQ(g_atApply, (Snapshot{1.0, 0.7, true, true, false}));
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

TEST_F(PopupClicks, CloseShowsTheMainPanelAndRefreshes) {
    OpenSettings();
    Press(kClose);
    EXPECT_EQ(g_app.panel, Panel::Main);
    EXPECT_EQ(g_panelAtRefresh, Panel::Main);
    EXPECT_EQ(g_calls.back(), "refresh");
    for (const std::string& call : g_calls)
        EXPECT_TRUE(call != "save" && call != "matrix") << call;
}

TEST_F(PopupClicks, ExtremeDimWithTheFilterOnAppliesSavesNowAndRefreshes) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.brightness = 0.1;
    Press(kExtremeDimRow);
    EXPECT_TRUE(g_app.allowExtremeDim);
    EXPECT_EQ(g_app.brightness, 0.1);
    EXPECT_EQ(g_calls, (Calls{"matrix", "save", "refresh"}));
    EXPECT_TRUE(g_atSave.extremeDim);
}

TEST_F(PopupClicks, LeavingExtremeDimLiftsADarkerBrightnessToTheFloorBeforeItIsApplied) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.allowExtremeDim = true;
    g_app.brightness = 0.03;
    Press(kExtremeDimRow);
    EXPECT_EQ(g_atApply, (Snapshot{0.385, 0.1, true, false, false}));
    EXPECT_EQ(g_atSave, g_atApply);
    EXPECT_EQ(g_app.brightness, 0.1);
    EXPECT_EQ(g_calls, (Calls{"matrix", "save", "refresh"}));
}

TEST_F(PopupClicks, ExtremeDimWithTheFilterOffIsOnlySavedAndShown) {
    OpenSettings();
    g_app.allowExtremeDim = true;
    g_app.brightness = 0.0;
    Press(kExtremeDimRow);
    EXPECT_FALSE(g_app.allowExtremeDim);
    EXPECT_EQ(g_app.brightness, 0.1);
    EXPECT_EQ(g_calls, (Calls{"save", "refresh"}));
    EXPECT_EQ(g_atSave.brightness, 0.1);
}

TEST_F(PopupClicks, LegacyModeOnClearsTheMatrixBeforeItFlips) {
    OpenSettings();
    g_app.filterOn = true;
    Press(kLegacyRow);
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_EQ(g_calls, (Calls{"identity matrix", "ramp", "save", "refresh"}));
    EXPECT_FALSE(g_atClear.legacy);
    EXPECT_TRUE(g_atApply.legacy);
    EXPECT_TRUE(g_atSave.legacy);
    EXPECT_FALSE(g_app.fallbackSuppressed);
}

TEST_F(PopupClicks, LegacyModeOffEndsTheFallbacksBookkeepingAndInitialisesTheMagnificationApi) {
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
    EXPECT_EQ(g_calls, (Calls{"identity ramp", "initialise", "matrix", "save", "refresh"}));
    EXPECT_TRUE(g_atClear.legacy);
    EXPECT_FALSE(g_atApply.legacy);
    EXPECT_FALSE(g_atSave.legacy);
}

TEST_F(PopupClicks, LegacyModeOffDoesNotInitialiseTwice) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.useLegacyGamma = true;
    Press(kLegacyRow);
    EXPECT_EQ(g_calls, (Calls{"identity ramp", "matrix", "save", "refresh"}));
}

TEST_F(PopupClicks, LegacyModeOffIsSavedEvenWhenTheMagnificationApiDoesNotCome) {
    OpenSettings();
    g_app.filterOn = true;
    g_app.useLegacyGamma = true;
    g_app.magnificationReady = false;
    g_initialisationSucceeds = false;
    Press(kLegacyRow);
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_EQ(g_calls, (Calls{"identity ramp", "initialise", "save", "refresh"}));
}

TEST_F(PopupClicks, LegacyModeWithTheFilterOffTouchesNoPipelinesColour) {
    OpenSettings();
    Press(kLegacyRow);
    EXPECT_EQ(g_calls, (Calls{"save", "refresh"}));
    g_calls.clear();
    g_app.magnificationReady = false;
    Press(kLegacyRow);
    EXPECT_EQ(g_calls, (Calls{"initialise", "save", "refresh"}));
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(PopupClicks, TheRowsKeepTheSettingsPanelOpen) {
    OpenSettings();
    Press(kExtremeDimRow);
    Press(kLegacyRow);
    EXPECT_EQ(g_app.panel, Panel::Settings);
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

TEST_F(PopupClicks, MainRegionsDoNotReactOnTheSettingsPanel) {
    OpenSettings();
    for (const POINT point : {kDay, kEvening, kNight, POINT{160, 525}, POINT{302, 30}})
        Press(point);
    EXPECT_TRUE(g_calls.empty());
    EXPECT_EQ(g_app.panel, Panel::Settings);
}

TEST_F(PopupClicks, SettingsRegionsDoNotReactOnTheMainPanel) {
    for (const POINT point : {kLaunchRow, kExtremeDimRow, kLegacyRow, kClose, POINT{254, 20}}) {
        Press({160, point.y});
    }
    Press({254, 20});
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupClicks, APressBeginsNoDragOnAButton) {
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

TEST_F(PopupClicks, WhatTheBannerCoversCannotToggleTheCard) {
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = true;
    g_app.pwmTargetsPresent = true;
    Press({160, 400});
    Press({160, 415});
    EXPECT_FALSE(g_app.pwmSafe);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupClicks, TheHintIsNotClickable) {
    Press({160, 395});
    EXPECT_TRUE(g_calls.empty());
}

// Each of these gets its action, and tests of it, with the subject it opens.
TEST_F(PopupClicks, RegionsWhoseActionsAreNotThereYetDoNothing) {
    g_app.pwmTargetsPresent = true;
    Press({160, 400});
    Press({292, 29});
    EXPECT_EQ(g_app.panel, Panel::Main);
    OpenSettings();
    Press(kLaunchRow);
    Press(kSupport);
    EXPECT_FALSE(g_app.launchAtStart);
    EXPECT_EQ(g_app.copiedUntil, 0U);
    EXPECT_TRUE(g_calls.empty());
}
