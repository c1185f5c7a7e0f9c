#include "app/display_events.h"
#include "app/recorded_pwm_safe.h"

#include <gtest/gtest.h>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/filter.h"
#include "filter/magnification.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_timers);

AMBREL_REPLACE(void, InitMagnification, ()) {
    Record("init magnification");
}
AMBREL_REPLACE(void, ApplyFilter, ()) {
    Record("apply filter");
}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

class DisplayEvents : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = MakeHandle<HWND>(500);
        g_calls.clear();
    }
};

}  // namespace

TEST_F(DisplayEvents, ADisplayChangeStartsTheSettleTimer) {
    OnDisplayChange();
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 2", "set timer 2 300"}));
}

TEST_F(DisplayEvents, ABurstOfDisplayChangesRestartsTheSettleTimerAndAppliesNothing) {
    g_app.filterOn = true;
    OnDisplayChange();
    OnDisplayChange();
    OnDisplayChange();
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 2", "set timer 2 300", "kill timer 2", "set timer 2 300",
                                   "kill timer 2", "set timer 2 300"}));
}

TEST_F(DisplayEvents, WithTheFilterOffSettlingReassertsTheLockAndRefreshes) {
    OnDisplaysSettled();
    g_app.magnificationReady = true;
    OnDisplaysSettled();
    g_app.useLegacyGamma = true;
    OnDisplaysSettled();
    EXPECT_EQ(g_calls,
              (CallRecord{"pwm reassert", "refresh", "pwm reassert", "refresh", "pwm reassert", "refresh"}));
}

TEST_F(DisplayEvents, SettlingForgetsWhichDisplaysRefuseRamps) {
    g_app.displaysWithoutRamps = 6;
    OnDisplaysSettled();
    EXPECT_EQ(g_app.displaysWithoutRamps, 0U);
}

TEST_F(DisplayEvents, SettlingReappliesTheFilter) {
    g_app.filterOn = true;
    g_app.magnificationReady = true;
    OnDisplaysSettled();
    EXPECT_EQ(g_calls, (CallRecord{"apply filter", "pwm reassert", "refresh"}));
}

TEST_F(DisplayEvents, SettlingInitialisesTheMagnificationApiIfItIsNotReady) {
    g_app.filterOn = true;
    OnDisplaysSettled();
    EXPECT_EQ(g_calls, (CallRecord{"init magnification", "apply filter", "pwm reassert", "refresh"}));
}

TEST_F(DisplayEvents, SettlingInLegacyModeDoesNotInitialiseTheMagnificationApi) {
    g_app.filterOn = true;
    g_app.useLegacyGamma = true;
    OnDisplaysSettled();
    g_app.magnificationReady = true;
    OnDisplaysSettled();
    EXPECT_EQ(g_calls, (CallRecord{"apply filter", "pwm reassert", "refresh", "apply filter", "pwm reassert",
                                   "refresh"}));
}
