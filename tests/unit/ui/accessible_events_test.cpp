// The events that report changes, each for the child that has changed.
#include "ui/accessible_events.h"

#include <gtest/gtest.h>

#include "ui/accessible_fixture.h"

namespace {

const std::string kShow = "event 8002 of 0";
const std::string kHide = "event 8003 of 0";
const std::string kReorder = "event 8004 of 0";

std::string StateOf(int child) {
    return "event 800a of " + std::to_string(child);
}
std::string NameOf(int child) {
    return "event 800c of " + std::to_string(child);
}
std::string DescriptionOf(int child) {
    return "event 800d of " + std::to_string(child);
}

// The help text repeats the description.
std::string HelpOf(int child) {
    return "event 8010 of " + std::to_string(child);
}
std::string ValueOf(int child) {
    return "event 800e of " + std::to_string(child);
}

class AccessibleEvents : public AccessibleTest {
protected:
    void SetUp() override {
        AccessibleTest::SetUp();
        AnnouncePopup(true);
        g_calls.clear();
    }

    // The events of the next frame.
    static CallRecord Paint() {
        g_calls.clear();
        AnnouncePanel();
        return g_calls;
    }
};

}  // namespace

TEST_F(AccessibleEvents, ShowingAndHidingAreAnnouncedOnce) {
    AnnouncePopup(true);
    EXPECT_EQ(g_calls, CallRecord{});
    AnnouncePopup(false);
    AnnouncePopup(false);
    EXPECT_EQ(g_calls, CallRecord{kHide});
    AnnouncePopup(true);
    EXPECT_EQ(g_calls, (CallRecord{kHide, kShow}));
}

TEST_F(AccessibleEvents, AFrameWithoutAChangeAnnouncesNothing) {
    EXPECT_EQ(Paint(), CallRecord{});
}

TEST_F(AccessibleEvents, AHiddenPopupAnnouncesNothingAndShowingItCoversTheChangesSince) {
    AnnouncePopup(false);
    g_app.filterOn = true;
    EXPECT_EQ(Paint(), CallRecord{});
    AnnouncePopup(true);
    EXPECT_EQ(Paint(), CallRecord{});
}

TEST_F(AccessibleEvents, ThePowerButtonsStateIsAnnounced) {
    g_app.filterOn = true;
    EXPECT_EQ(Paint(), CallRecord{StateOf(kIdPower)});
    EXPECT_EQ(Paint(), CallRecord{});
}

TEST_F(AccessibleEvents, APresetAnnouncesValuesAndStates) {
    g_app.intensity = 0.5846153846153845;
    g_app.brightness = 0.95;
    EXPECT_EQ(Paint(),
              (CallRecord{ValueOf(kIdWarmth), ValueOf(kIdBrightness), StateOf(kIdDay), StateOf(kIdEvening)}));
}

TEST_F(AccessibleEvents, OnlyTheStepsOfADragThatChangeATextAreAnnounced) {
    g_app.intensity = 0.5;  // 3250 K
    Paint();
    g_app.intensity = 0.50003;  // 3249.8 K
    EXPECT_EQ(Paint(), CallRecord{});
    g_app.intensity = 0.5001;  // 3249.35 K
    EXPECT_EQ(Paint(), CallRecord{ValueOf(kIdWarmth)});
}

TEST_F(AccessibleEvents, TheLitHintIsAnotherControlWithAnotherState) {
    g_app.brightness = 0.89;
    EXPECT_EQ(Paint(), (CallRecord{kReorder, ValueOf(kIdBrightness), StateOf(kIdStrip)}));
}

TEST_F(AccessibleEvents, TheStripAnnouncesItsNameAndItsStatus) {
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(Paint(), (CallRecord{kReorder, NameOf(kIdStrip), DescriptionOf(kIdStrip), HelpOf(kIdStrip),
                                   StateOf(kIdStrip)}));
    g_app.pwmSafe = true;
    EXPECT_EQ(Paint(), (CallRecord{DescriptionOf(kIdStrip), HelpOf(kIdStrip), StateOf(kIdStrip)}));
    g_app.pwmLockConfirmed = true;
    EXPECT_EQ(Paint(), (CallRecord{DescriptionOf(kIdStrip), HelpOf(kIdStrip)}));
    g_app.useLegacyGamma = g_app.lastApplyRejected = true;
    EXPECT_EQ(Paint(), (CallRecord{kReorder, NameOf(kIdStrip), DescriptionOf(kIdStrip), HelpOf(kIdStrip),
                                   StateOf(kIdStrip)}));
    g_app.gammaRangeExpanded = true;
    EXPECT_EQ(Paint(), CallRecord{NameOf(kIdStrip)});
}

TEST_F(AccessibleEvents, AnotherPanelIsOneEvent) {
    g_app.panel = Panel::Settings;
    EXPECT_EQ(Paint(), CallRecord{kReorder});
    g_app.panel = Panel::Main;
    g_app.filterOn = true;
    EXPECT_EQ(Paint(), CallRecord{kReorder});
}

TEST_F(AccessibleEvents, TheSettingsPanelAnnouncesItsSwitchesAndTheCopiedIndication) {
    g_app.panel = Panel::Settings;
    Paint();
    g_app.allowExtremeDim = true;
    EXPECT_EQ(Paint(), CallRecord{StateOf(kIdExtremeDim)});
    g_app.copiedUntil = UINT64_MAX;
    EXPECT_EQ(Paint(), (CallRecord{NameOf(kIdSupport), DescriptionOf(kIdSupport), HelpOf(kIdSupport)}));
    g_app.copiedUntil = 0;
    EXPECT_EQ(Paint(), (CallRecord{NameOf(kIdSupport), DescriptionOf(kIdSupport), HelpOf(kIdSupport)}));
}

TEST_F(AccessibleEvents, AMessageBoxChangesTheStateOfThePopupAndOfEachControl) {
    g_app.panel = Panel::Settings;
    Paint();
    g_calls.clear();
    AnnounceEnabling();
    EXPECT_EQ(g_calls, (CallRecord{StateOf(CHILDID_SELF), StateOf(1), StateOf(2), StateOf(3), StateOf(4),
                                   StateOf(5), StateOf(6)}));
}

TEST_F(AccessibleEvents, AMessageBoxOfAHiddenPopupAnnouncesNothing) {
    AnnouncePopup(false);
    g_calls.clear();
    AnnounceEnabling();
    EXPECT_EQ(g_calls, CallRecord{});
}
