// The record of Legacy Mode's ramp for the next start, in order with the calls that load ramps.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_screen.h"
#include "filter/filter.h"
#include "filter/legacy_gamma.h"
#include "store/restore_record.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_cursors);

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {}

namespace {

bool g_recorded = false;

CallRecord WithoutReads(CallRecord calls) {
    std::erase_if(calls, [](const std::string& call) {
        return call.find("dc") != std::string::npos || call.find("read") == 0 ||
               call.find("cursors") != std::string::npos;
    });
    return calls;
}

class RampRecord : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.useLegacyGamma = true;
        g_app.intensity = 0.5;
        g_screen = FakeScreen{};
        g_recorded = false;
        g_calls.clear();
    }
    void TearDown() override { g_app = AppState{}; }

    // The calls that load ramps and change the record.
    template <typename Act>
    static CallRecord During(Act act) {
        g_calls.clear();
        act();
        return WithoutReads(g_calls);
    }

    static void SwitchOn() {
        g_app.filterOn = true;
        ApplyFilter();
    }

    static void SwitchOff() {
        g_app.filterOn = false;
        ApplyFilter();
    }
};

}  // namespace

AMBREL_REPLACE(void, RecordRamp, ()) {
    Record("record");
    g_recorded = true;
}
AMBREL_REPLACE(void, DeleteRampRecord, ()) {
    Record("delete record");
    g_recorded = false;
}
AMBREL_REPLACE(bool, IsRampRecorded, ()) {
    return g_recorded;
}

TEST_F(RampRecord, TheFirstRampIsRecordedBeforeItIsLoaded) {
    EXPECT_EQ(During(SwitchOn), (CallRecord{"record", "set ramp"}));
}

TEST_F(RampRecord, FurtherRampsDoNotTouchTheRecord) {
    SwitchOn();
    EXPECT_EQ(During([] {
                  for (const double intensity : {0.6, 0.0, 0.7}) {
                      g_app.intensity = intensity;
                      ApplyFilter();
                  }
              }),
              (CallRecord{"set ramp", "set ramp", "set ramp"}));
}

TEST_F(RampRecord, AFirstRampThatEqualsTheIdentityIsRecordedToo) {
    g_app.intensity = 0.0;
    EXPECT_EQ(During(SwitchOn), (CallRecord{"record", "set ramp"}));
}

TEST_F(RampRecord, TheRecordIsDeletedAfterTheIdentityIsLoaded) {
    SwitchOn();
    EXPECT_EQ(During(SwitchOff), (CallRecord{"set ramp", "delete record"}));
    EXPECT_EQ(During(SwitchOff), CallRecord{"set ramp"});
}

TEST_F(RampRecord, WithoutTheFiltersRampTheRecordIsNotTouched) {
    EXPECT_EQ(During([] { RestoreIdentityRamp(); }), CallRecord{"set ramp"});
}

TEST_F(RampRecord, ARefusedIdentityKeepsTheRecordUntilOneIsAccepted) {
    SwitchOn();
    g_screen.acceptsRamps = false;
    EXPECT_EQ(During(SwitchOff), CallRecord{"set ramp"});
    EXPECT_TRUE(g_recorded);
    g_screen.acceptsRamps = true;
    EXPECT_EQ(During([] { RestoreIdentityRamp(); }), (CallRecord{"set ramp", "delete record"}));
}

TEST_F(RampRecord, WithoutAScreenContextTheRecordStays) {
    SwitchOn();
    g_screen.givesContext = false;
    SwitchOff();
    EXPECT_TRUE(g_recorded);
}

TEST_F(RampRecord, OnAnExtendedDesktopOneDisplayThatAcceptsTheIdentityIsEnough) {
    SwitchOn();
    g_screen.acceptsRamps = false;
    g_screen.displays = {NamedDisplay(1), NamedDisplay(2)};
    g_screen.displays[1].accepts = Accepts::Nothing;
    SwitchOff();
    EXPECT_FALSE(g_recorded);
}

TEST_F(RampRecord, OnAnExtendedDesktopWhereEveryDisplayRefusesTheRecordStays) {
    SwitchOn();
    g_screen.acceptsRamps = false;
    g_screen.displays = {NamedDisplay(1), NamedDisplay(2)};
    for (FakeDisplay& display : g_screen.displays)
        display.accepts = Accepts::Nothing;
    SwitchOff();
    EXPECT_TRUE(g_recorded);
}

// The next start.

TEST_F(RampRecord, AStartWithoutARecordLoadsNothing) {
    EXPECT_TRUE(During([] { ResetRampOfLastRun(); }).empty());
}

TEST_F(RampRecord, AStartWithARecordLoadsTheIdentityAndDeletesIt) {
    for (const bool legacy : {true, false}) {
        g_app.useLegacyGamma = legacy;
        g_recorded = true;
        EXPECT_EQ(During([] { ResetRampOfLastRun(); }),
                  (CallRecord{"set ramp", "set ramp of \\\\.\\DISPLAY1", "delete record"}));
        EXPECT_TRUE(g_screen.seen.back() == IdentityRamp());
    }
}

TEST_F(RampRecord, AStartResetsEveryDisplayOfAnExtendedDesktop) {
    g_recorded = true;
    g_screen.displays = {NamedDisplay(1), NamedDisplay(2)};
    for (FakeDisplay& display : g_screen.displays)
        display.shown.channels[kRed][255] = 7;
    ResetRampOfLastRun();
    for (const FakeDisplay& display : g_screen.displays)
        EXPECT_TRUE(display.shown == IdentityRamp());
    EXPECT_FALSE(g_recorded);
}

TEST_F(RampRecord, ARefusalAtTheStartKeepsTheRecordForTheEnd) {
    g_recorded = true;
    g_screen.acceptsRamps = false;
    g_screen.displays[0].accepts = Accepts::Nothing;
    ResetRampOfLastRun();
    EXPECT_TRUE(g_recorded);
    g_screen.acceptsRamps = true;
    RestoreIdentityRamp();
    EXPECT_FALSE(g_recorded);
}

// The end.

TEST_F(RampRecord, ARefusedIdentityIsTriedOnceMoreAtTheEnd) {
    SwitchOn();
    g_screen.acceptsRamps = false;
    g_app.ending = true;
    EXPECT_EQ(During([] { RestoreIdentityRamp(); }), (CallRecord{"set ramp", "set ramp"}));
}

TEST_F(RampRecord, ARefusedIdentityOfADisplayIsTriedOnceMoreAtTheEnd) {
    SwitchOn();
    g_screen.acceptsRamps = false;
    g_screen.displays = {NamedDisplay(1), NamedDisplay(2)};
    g_screen.displays[1].accepts = Accepts::Nothing;
    g_app.ending = true;
    EXPECT_EQ(During([] { RestoreIdentityRamp(); }),
              (CallRecord{"set ramp", "set ramp", "set ramp of \\\\.\\DISPLAY1",
                          "set ramp of \\\\.\\DISPLAY2", "set ramp of \\\\.\\DISPLAY2", "delete record"}));
}

TEST_F(RampRecord, AnAcceptedIdentityIsLoadedOnceAtTheEnd) {
    SwitchOn();
    g_app.ending = true;
    EXPECT_EQ(During([] { RestoreIdentityRamp(); }), (CallRecord{"set ramp", "delete record"}));
}
