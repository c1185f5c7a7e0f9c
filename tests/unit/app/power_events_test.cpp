#include "app/power_events.h"

#include <gtest/gtest.h>

#include <cstring>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_timers);

namespace {

HWND const kWindow = MakeHandle<HWND>(500);
constexpr WPARAM kPowerSettingChange = 0x8013;  // PBT_POWERSETTINGCHANGE
constexpr DWORD kOff = 0, kOn = 1, kDimmed = 2;

// As documented for GUID_CONSOLE_DISPLAY_STATE; the other is GUID_MONITOR_POWER_ON.
constexpr GUID kConsoleDisplay = {
    0x6FE69556, 0x704A, 0x47A0, {0x8F, 0x24, 0xC2, 0x8D, 0x93, 0x6F, 0xDA, 0x47}};
constexpr GUID kMonitorPower = {0x02731015, 0x4510, 0x4526, {0x99, 0xE6, 0xE5, 0xA1, 0x7E, 0xBD, 0x1A, 0xEA}};

GUID g_registered = {};
bool g_registrationSucceeds = true;

HPOWERNOTIFY WINAPI FakeRegisterSuspendResume(HANDLE window, DWORD flags) {
    Record("register resume ", ValueOf(window), " ", flags);
    return g_registrationSucceeds ? MakeHandle<HPOWERNOTIFY>(21) : nullptr;
}

HPOWERNOTIFY WINAPI FakeRegisterPowerSetting(HANDLE window, const GUID* setting, DWORD flags) {
    g_registered = *setting;
    Record("register setting ", ValueOf(window), " ", flags);
    return g_registrationSucceeds ? MakeHandle<HPOWERNOTIFY>(22) : nullptr;
}

BOOL WINAPI FakeUnregisterSuspendResume(HPOWERNOTIFY handle) {
    Record("unregister resume ", ValueOf(handle));
    return TRUE;
}

BOOL WINAPI FakeUnregisterPowerSetting(HPOWERNOTIFY handle) {
    Record("unregister setting ", ValueOf(handle));
    return TRUE;
}

struct Setting {
    GUID setting;
    DWORD length;
    UCHAR data[8];
};
static_assert(offsetof(Setting, data) == offsetof(POWERBROADCAST_SETTING, Data));

class PowerEvents : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_calls.clear();
        g_registrationSucceeds = true;
    }

    static void Tell(DWORD state, const GUID& guid = kConsoleDisplay, DWORD length = 4) {
        Setting setting = {guid, length, {}};
        std::memcpy(setting.data, &state, sizeof(state));
        OnPowerBroadcast(kPowerSettingChange, reinterpret_cast<LPARAM>(&setting));
    }
};

}  // namespace

AMBREL_SEAM(RegisterSuspendResumeNotification, FakeRegisterSuspendResume);
AMBREL_SEAM(RegisterPowerSettingNotification, FakeRegisterPowerSetting);
AMBREL_SEAM(UnregisterSuspendResumeNotification, FakeUnregisterSuspendResume);
AMBREL_SEAM(UnregisterPowerSettingNotification, FakeUnregisterPowerSetting);

TEST_F(PowerEvents, AResumeGivesTheDisplays1200Milliseconds) {
    OnPowerBroadcast(18, 0);
    OnPowerBroadcast(7, 0);
    EXPECT_EQ(g_calls, (CallRecord{"set timer 2 1200", "set timer 2 1200"}));
}

// The parameter of some of them is a flag and no address.
TEST_F(PowerEvents, OtherPowerEventsDoNothing) {
    for (const WPARAM event : {0U, 4U, 6U, 8U, 9U, 10U, 11U, 17U, 19U})
        OnPowerBroadcast(event, 1);
    OnPowerBroadcast(kPowerSettingChange, 0);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PowerEvents, ASettingThatCannotBeReadDoesNothing) {
    Tell(kOff);
    for (const LPARAM wild : {LPARAM{1}, LPARAM{0x7FFF0000}, LPARAM{-1}})
        OnPowerBroadcast(kPowerSettingChange, wild);
    EXPECT_EQ(g_app.displayState, kOff);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PowerEvents, BothRegistrationsAreOfTheWindowAndEndTogether) {
    RegisterPowerEvents(kWindow);
    EXPECT_EQ(g_calls, (CallRecord{"register resume 500 0", "register setting 500 0"}));
    EXPECT_TRUE(IsEqualGUID(g_registered, kConsoleDisplay));
    g_calls.clear();
    UnregisterPowerEvents();
    EXPECT_EQ(g_calls, (CallRecord{"unregister resume 21", "unregister setting 22"}));
    g_calls.clear();
    UnregisterPowerEvents();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PowerEvents, ARegistrationThatFailedIsNotEnded) {
    g_registrationSucceeds = false;
    RegisterPowerEvents(kWindow);
    g_calls.clear();
    UnregisterPowerEvents();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PowerEvents, TheStateThatFollowsTheRegistrationStartsNothing) {
    RegisterPowerEvents(kWindow);
    g_calls.clear();
    Tell(kOn);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PowerEvents, DisplaysThatWereOffAndComeOnCountAsAResume) {
    Tell(kOff);
    EXPECT_TRUE(g_calls.empty());
    Tell(kOn);
    EXPECT_EQ(g_calls, (CallRecord{"set timer 2 1200"}));
    g_calls.clear();
    Tell(kOn);
    EXPECT_TRUE(g_calls.empty());
    Tell(kOff);
    Tell(kOff);
    Tell(kOn);
    EXPECT_EQ(g_calls, (CallRecord{"set timer 2 1200"}));
}

TEST_F(PowerEvents, DisplaysThatWereDimmedDoNot) {
    Tell(kDimmed);
    Tell(kOn);
    Tell(kOff);
    Tell(kDimmed);
    Tell(kOn);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PowerEvents, AnotherSettingDoesNotChangeTheStateOfTheDisplays) {
    Tell(kOff, kMonitorPower);
    Tell(kOn);
    EXPECT_TRUE(g_calls.empty());
    Tell(kOff);
    Tell(kOn, kMonitorPower);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PowerEvents, DataOfAnotherLengthIsIgnored) {
    for (const DWORD length : {0U, 1U, 3U, 5U, 8U, 0xFFFFFFFFU}) {
        Tell(kOff, kConsoleDisplay, length);
        Tell(kOn);
        EXPECT_TRUE(g_calls.empty()) << length;
    }
}
