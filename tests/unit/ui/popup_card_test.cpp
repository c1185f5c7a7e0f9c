// A press on the card through the real controller, with displays that accept every value: the calls to
// displays, timers and settings in order.
#include <gtest/gtest.h>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "brightness/display_targets.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "ui/popup_input.h"
#include "ui/support_copy.h"

AMBREL_USES_SEAMS(recorded_timers);
AMBREL_USES_SEAMS(recorded_log);

namespace {

DisplayTargetList g_displays;

std::uint32_t Shown(std::size_t display) {
    return g_displays[display].percent;
}

class PopupCard : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = MakeHandle<HWND>(500);
        g_app.pwmTargetsPresent = true;
        g_app.pwmRetryCount = 7;
        g_app.pwmRetrySlowed = true;
        g_displays = {{TargetKind::WmiPanel, L"panel", 0, 100, 40},
                      {TargetKind::DdcMonitor, L"monitor", 0, 80, 60}};
        g_calls.clear();
    }

    static void Press() { OnMouseDown(160, 400); }
};

}  // namespace

AMBREL_REPLACE(void, EnumerateTargets, (DisplayTargetList * list)) {
    Record("list");
    *list = g_displays;
}
AMBREL_REPLACE(void, CountTargets, (const DisplayTargetList& list)) {
    g_app.pwmTargetsPresent = !list.empty();
    g_app.pwmTargetCount = static_cast<std::int32_t>(list.size());
    g_app.pwmTargetsAt100 = 0;
    for (const DisplayTarget& display : list)
        g_app.pwmTargetsAt100 += display.percent == 100 ? 1 : 0;
}
AMBREL_REPLACE(bool, SetTargetBrightness, (const DisplayTarget& target, std::uint32_t percent)) {
    Record("set ", Narrow(target.name), " ", percent);
    for (DisplayTarget& display : g_displays) {
        if (display.name == target.name) display.percent = percent;
    }
    return true;
}
AMBREL_REPLACE(void, CopySupportBundle, ()) {
    ADD_FAILURE() << "the card is no support button";
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save ", g_app.pwmSafe ? "on" : "off");
}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

TEST_F(PopupCard, APressLocksEveryDisplaySavesOnceAndRefreshes) {
    Press();
    EXPECT_EQ(g_calls, (CallRecord{"log: PWM-safe toggled ON by user", "list", "set panel 100",
                                   "set monitor 100", "kill timer 4", "set timer 4 2000", "kill timer 5",
                                   "set timer 5 750", "save on", "refresh"}));
    EXPECT_TRUE(g_app.pwmSafe);
    EXPECT_TRUE(g_app.pwmVerifyPending);
    EXPECT_TRUE(g_app.pwmVerifyIsUserToggle);
    EXPECT_EQ(g_app.pwmRetryCount, 0);
    EXPECT_FALSE(g_app.pwmRetrySlowed);
}

TEST_F(PopupCard, ASecondPressRestoresTheOldValuesSavesOnceAndRefreshes) {
    Press();
    g_calls.clear();
    Press();
    EXPECT_EQ(g_calls,
              (CallRecord{"log: PWM-safe toggled OFF by user", "kill timer 5", "list", "set panel 40",
                          "set monitor 60", "kill timer 4", "list", "save off", "refresh"}));
    EXPECT_FALSE(g_app.pwmSafe);
    EXPECT_FALSE(g_app.pwmVerifyPending);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
    EXPECT_EQ(Shown(0), 40U);
    EXPECT_EQ(Shown(1), 60U);
}

TEST_F(PopupCard, APressAfterTheLastDisplayDisconnectedSwitchesTheModeBackOff) {
    g_displays.clear();
    g_app.pwmSavedBrightness[L"long gone"] = 30;
    Press();
    EXPECT_EQ(g_calls, (CallRecord{"log: PWM-safe toggled ON by user", "list", "kill timer 4", "save off",
                                   "refresh"}));
    EXPECT_FALSE(g_app.pwmSafe);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
}

TEST_F(PopupCard, EveryPixelOfTheCardTogglesAndNoneOutsideIt) {
    for (const POINT inside : {POINT{24, 384}, POINT{295, 384}, POINT{24, 417}, POINT{295, 417}}) {
        g_calls.clear();
        OnMouseDown(inside.x, inside.y);
        EXPECT_FALSE(g_calls.empty()) << inside.x << "," << inside.y;
    }
    g_calls.clear();
    for (const POINT outside : {POINT{23, 400}, POINT{296, 400}, POINT{160, 383}, POINT{160, 418}})
        OnMouseDown(outside.x, outside.y);
    EXPECT_EQ(g_calls, CallRecord{});
}

TEST_F(PopupCard, WithoutADisplayItExistsOnlyWhileTheModeIsOn) {
    g_displays.clear();
    g_app.pwmTargetsPresent = false;
    Press();
    EXPECT_EQ(g_calls, CallRecord{});
    g_app.pwmSafe = true;
    Press();
    EXPECT_EQ(g_calls.front(), "log: PWM-safe toggled OFF by user");
    EXPECT_FALSE(g_app.pwmSafe);
}
