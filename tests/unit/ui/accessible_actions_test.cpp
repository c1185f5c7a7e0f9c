// Requests of assistive technology: checked and queued in the call, performed by the message loop as clicks.
#include "ui/accessible_actions.h"

#include <gtest/gtest.h>

#include "app/state/timers.h"
#include "brightness/display_operation.h"
#include "ui/accessible_fixture.h"
#include "ui/click_fixture.h"

namespace {

const std::string kPosted = "post 32876 0 0";  // WM_APP + 108

class AccessibleActions : public AccessibleTest {
protected:
    void SetUp() override {
        AccessibleTest::SetUp();
        g_app.magnificationReady = true;
        g_fixture = ClickFixture{};
    }

    // Performs the queued actions, like the message loop, and returns the calls that they make.
    static CallRecord Perform() {
        g_calls.clear();
        PerformAccessibleActions();
        return g_calls;
    }
};

}  // namespace

TEST_F(AccessibleActions, ARequestIsOnlyPosted) {
    EXPECT_EQ(Press(kIdPower), S_OK);
    EXPECT_EQ(g_calls, CallRecord{kPosted});
    EXPECT_FALSE(g_app.filterOn);
    EXPECT_EQ(SetValue(kIdWarmth, L"2700K"), S_OK);
    EXPECT_EQ(g_app.intensity, 0.385);
}

TEST_F(AccessibleActions, ADefaultActionDoesWhatAClickDoes) {
    struct Case {
        Panel panel;
        int child;
        POINT click;
    };
    const Case cases[] = {
        {Panel::Main, kIdGear, kGear},
        {Panel::Main, kIdDay, kDay},
        {Panel::Main, kIdEvening, kEvening},
        {Panel::Main, kIdNight, kNight},
        {Panel::Main, kIdPower, kPower},
        {Panel::Main, kIdStrip, kCard},
        {Panel::Settings, kIdClose, kClose},
        {Panel::Settings, kIdLaunch, kLaunchRow},
        {Panel::Settings, kIdLegacy, kLegacyRow},
        {Panel::Settings, kIdExtremeDim, kExtremeDimRow},
        {Panel::Settings, kIdSupport, kSupport},
    };
    for (const Case& each : cases) {
        AppState start;
        start.mainWindow = g_app.mainWindow;
        start.magnificationReady = true;
        start.pwmTargetsPresent = true;
        start.panel = each.panel;
        start.brightness = 0.5;

        g_app = start;
        g_calls.clear();
        OnMouseDown(each.click.x, each.click.y);
        const CallRecord clicked = g_calls;
        const Snapshot stateAfterClick = Now();
        const Panel panelAfterClick = g_app.panel;
        ASSERT_FALSE(clicked.empty());

        g_app = start;
        ASSERT_EQ(Press(each.child), S_OK);
        EXPECT_EQ(Perform(), clicked) << each.child;
        EXPECT_EQ(Now(), stateAfterClick) << each.child;
        EXPECT_EQ(g_app.panel, panelAfterClick);
    }
}

TEST_F(AccessibleActions, TheBannersDefaultActionStartsTheFix) {
    g_app.useLegacyGamma = g_app.lastApplyRejected = true;
    ASSERT_EQ(Press(kIdStrip), S_OK);
    EXPECT_EQ(Perform(), CallRecord{"gamma fix"});
}

TEST_F(AccessibleActions, ASlidersValueIsSetAppliedAndSavedLater) {
    g_app.filterOn = true;
    ASSERT_EQ(SetValue(kIdWarmth, L"2,700K"), S_OK);
    EXPECT_EQ(Perform(), (CallRecord{"matrix", "tint cursors", "refresh", "kill 1", "set 1 500"}));
    EXPECT_EQ(g_app.intensity, 0.5846153846153845);
    ASSERT_EQ(SetValue(kIdBrightness, L"40%"), S_OK);
    EXPECT_EQ(Perform(), (CallRecord{"matrix", "tint cursors", "refresh", "kill 1", "set 1 500"}));
    EXPECT_EQ(g_app.brightness, 0.4);
    EXPECT_EQ(g_app.dragSlider, Slider::None);
}

TEST_F(AccessibleActions, ValuesAreClampedAsInADrag) {
    const struct {
        const wchar_t* text;
        bool extremeDim;
        double brightness;
    } cases[] = {{L"5%", false, 0.1}, {L"5%", true, 0.05}, {L"0%", true, 0.0}, {L"250%", false, 1.0}};
    for (const auto& each : cases) {
        g_app.allowExtremeDim = each.extremeDim;
        ASSERT_EQ(SetValue(kIdBrightness, each.text), S_OK);
        Perform();
        EXPECT_EQ(g_app.brightness, each.brightness);
    }
    ASSERT_EQ(SetValue(kIdWarmth, L"7000K"), S_OK);
    Perform();
    EXPECT_EQ(g_app.intensity, 0.0);
    ASSERT_EQ(SetValue(kIdWarmth, L"101%"), S_OK);
    Perform();
    EXPECT_EQ(g_app.intensity, 1.0);
}

TEST_F(AccessibleActions, ARefusedRequestQueuesNothing) {
    EXPECT_EQ(Press(kIdTitle), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Press(kIdWarmth), DISP_E_MEMBERNOTFOUND) << "a press of a slider does not move it";
    EXPECT_EQ(Press(CHILDID_SELF), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Press(12), E_INVALIDARG);
    EXPECT_EQ(SetValue(kIdPower, L"85%"), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(SetValue(CHILDID_SELF, L"85%"), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(SetValue(kIdBrightness, L"2700K"), E_INVALIDARG);
    EXPECT_EQ(SetValue(kIdBrightness, L"85"), E_INVALIDARG);
    EXPECT_EQ(object->put_accValue(ChildId(kIdWarmth), nullptr), E_INVALIDARG);
    EXPECT_EQ(g_calls, CallRecord{});
    EXPECT_EQ(Perform(), CallRecord{});
}

TEST_F(AccessibleActions, SelectingAPresetIsAClickOnIt) {
    ASSERT_EQ(object->accSelect(SELFLAG_TAKESELECTION, ChildId(kIdEvening)), S_OK);
    Perform();
    EXPECT_EQ(g_app.intensity, 0.5846153846153845);
    EXPECT_TRUE(g_app.filterOn);
    EXPECT_EQ(object->accSelect(SELFLAG_TAKESELECTION, ChildId(kIdPower)), DISP_E_MEMBERNOTFOUND);
}

TEST_F(AccessibleActions, RequestsArePerformedInTheirOrder) {
    ASSERT_EQ(Press(kIdNight), S_OK);
    ASSERT_EQ(SetValue(kIdBrightness, L"30%"), S_OK);
    ASSERT_EQ(Press(kIdGear), S_OK);
    Perform();
    EXPECT_EQ(g_app.intensity, 1.0);
    EXPECT_EQ(g_app.brightness, 0.3);
    EXPECT_EQ(g_app.panel, Panel::Settings);
    EXPECT_EQ(Perform(), CallRecord{}) << "once only";
}

TEST_F(AccessibleActions, ARequestForAControlThatIsNoLongerShownIsDropped) {
    g_app.pwmTargetsPresent = true;
    ASSERT_EQ(Press(kIdStrip), S_OK);
    g_app.pwmTargetsPresent = false;
    EXPECT_EQ(Perform(), CallRecord{});
    ASSERT_EQ(Press(kIdPower), S_OK);
    g_app.panel = Panel::Settings;
    EXPECT_EQ(Perform(), CallRecord{});
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(AccessibleActions, UnderAMessageBoxNothingCanBePressedOrSet) {
    ASSERT_EQ(Press(kIdPower), S_OK);
    g_accessibleWindow.enabled = false;
    EXPECT_EQ(Press(kIdPower), E_ACCESSDENIED);
    EXPECT_EQ(SetValue(kIdWarmth, L"2700K"), E_ACCESSDENIED);
    EXPECT_EQ(Perform(), CallRecord{}) << "a request from before the box is dropped";
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(AccessibleActions, AHiddenPopupCanBeOperated) {
    g_accessibleWindow.visible = false;
    ASSERT_EQ(Press(kIdPower), S_OK);
    Perform();
    EXPECT_TRUE(g_app.filterOn);
}

TEST_F(AccessibleActions, RequestsWaitForAnOperationOnTheDisplays) {
    g_app.pwmOperationRunning = true;
    ASSERT_EQ(Press(kIdPower), S_OK);
    EXPECT_EQ(Perform(), CallRecord{});
    EXPECT_FALSE(g_app.filterOn);
    g_app.pwmOperationRunning = false;
    Perform();
    EXPECT_TRUE(g_app.filterOn);
}

TEST_F(AccessibleActions, TheEndOfAnOperationOnTheDisplaysPostsTheMessageAgain) {
    {
        const DisplayOperation operation;
        ASSERT_TRUE(operation.started);
        ASSERT_EQ(Press(kIdPower), S_OK);
        EXPECT_EQ(Perform(), CallRecord{});
    }
    EXPECT_EQ(g_calls, CallRecord{kPosted});
    Perform();
    { const DisplayOperation operation; }
    EXPECT_EQ(g_calls, (CallRecord{"matrix", "tint cursors", "refresh", "kill 1", "set 1 500"}))
        << "nothing is queued, nothing is posted";
}

TEST_F(AccessibleActions, AFullQueueAndAFailedPostRefuse) {
    for (int i = 0; i < kMaxAccessibleActions; ++i)
        ASSERT_EQ(Press(kIdPower), S_OK);
    EXPECT_EQ(Press(kIdPower), E_FAIL);
    EXPECT_EQ(SetValue(kIdWarmth, L"1000K"), E_FAIL);
    Perform();
    EXPECT_FALSE(g_app.filterOn) << "pressed an even number of times";
    g_accessibleWindow.postingFails = true;
    EXPECT_EQ(Press(kIdPower), E_FAIL);
    EXPECT_EQ(g_app.accessibleActions.count, 0);
}
