// The controller with real targets: all calls to monitors and panels in each operation. A slow monitor takes
// seconds per call, so every needless or repeated call is a failure.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "brightness/fake_monitors.h"
#include "brightness/pwm_safe.h"
#include "brightness/wmi.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

using testing::ElementsAreArray;

std::uint32_t g_panelPercent;
bool g_panelPresent;

// An enumeration of two display monitors.
const CallRecord kEnumeration = {"list panels", "visit all",       "count M1", "fetch 1 of M1",
                                 "info M1",     "capabilities 11", "read 11",  "destroy 1 of M1",
                                 "count M2",    "fetch 1 of M2",   "info M2",  "capabilities 21",
                                 "read 21",     "destroy 1 of M2"};

CallRecord SetFirst(const std::string& raw) {
    return {"visit all",       "count M1", "fetch 1 of M1", "info M1", "read 11",        "write 11 " + raw,
            "destroy 1 of M1", "count M2", "fetch 1 of M2", "info M2", "destroy 1 of M2"};
}

CallRecord SetSecond(const std::string& raw) {
    return {"visit all",     "count M1", "fetch 1 of M1", "info M1",         "destroy 1 of M1", "count M2",
            "fetch 1 of M2", "info M2",  "read 21",       "write 21 " + raw, "destroy 1 of M2"};
}

CallRecord InOrder(const std::vector<CallRecord>& parts) {
    CallRecord all;
    for (const CallRecord& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

const CallRecord kTimersStarted = {"kill timer 4", "set timer 4 2000", "kill timer 5", "set timer 5 750"};

class PwmCalls : public testing::Test {
protected:
    void SetUp() override {
        StartWithoutMonitors();
        g_panelPresent = false;
        g_panelPercent = 45;
        g_app.mainWindow = MakeHandle<HWND>(0x1234);
        g_monitors = {{.device = L"D1", .physical = {{.handle = 11, .current = 40, .maximum = 80}}},
                      {.device = L"D2", .physical = {{.handle = 21, .current = 70}}}};
    }
    void TearDown() override {
        EXPECT_EQ(HandlesHeld(), 0);
        g_app = AppState{};
    }

    template <typename Act>
    static CallRecord During(Act act) {
        g_calls.clear();
        act();
        return g_calls;
    }

    static void Lock() {
        TogglePwmSafeByUser();
        VerifyPwmLock();
        ASSERT_TRUE(g_app.pwmLockConfirmed);
    }
};

}  // namespace

AMBREL_REPLACE(void, EnumerateWmiTargets, (DisplayTargetList * list)) {
    Record("list panels");
    if (g_panelPresent) list->push_back({TargetKind::WmiPanel, L"panel", 0, 100, g_panelPercent});
}

AMBREL_REPLACE(bool, SetWmiBrightness, (const std::wstring& name, std::uint32_t percent)) {
    Record(Narrow(name), " := ", percent);
    g_panelPercent = percent;
    return true;
}

AMBREL_REPLACE(void, SaveSettings, ()) {
    Record(g_app.pwmSafe ? "save on" : "save off");
}

TEST_F(PwmCalls, SwitchingOnEnumeratesOnceAndSetsEachMonitorOnce) {
    EXPECT_THAT(During([] { TogglePwmSafeByUser(); }),
                ElementsAreArray(InOrder({{"log: PWM-safe toggled ON by user"},
                                          kEnumeration,
                                          {"log: PWM-safe targets: 2 controllable (was 0)"},
                                          SetFirst("80"),
                                          SetSecond("100"),
                                          kTimersStarted,
                                          {"save on"}})));
}

TEST_F(PwmCalls, AVerificationEnumeratesOnce) {
    TogglePwmSafeByUser();
    EXPECT_THAT(
        During([] { VerifyPwmLock(); }),
        ElementsAreArray(InOrder(
            {{"kill timer 5"}, kEnumeration, {"log: PWM-safe: 2 display(s) confirmed locked at 100%"}})));
}

TEST_F(PwmCalls, APollThatFindsTheLockEnumeratesOnce) {
    Lock();
    EXPECT_THAT(During([] { RefreshPwmSafeTargets(true); }), ElementsAreArray(kEnumeration));
}

TEST_F(PwmCalls, APollThatFindsALostLockEnumeratesTwiceAndSetsEachMonitorOnce) {
    Lock();
    g_monitors[1].physical[0].current = 30;
    EXPECT_THAT(During([] { RefreshPwmSafeTargets(true); }),
                ElementsAreArray(
                    InOrder({kEnumeration, kEnumeration, SetFirst("80"), SetSecond("100"), kTimersStarted})));
}

TEST_F(PwmCalls, SwitchingOffEnumeratesTwiceAndRestoresEachMonitorOnce) {
    Lock();
    EXPECT_THAT(During([] { TogglePwmSafeByUser(); }),
                ElementsAreArray(InOrder({{"log: PWM-safe toggled OFF by user", "kill timer 5"},
                                          kEnumeration,
                                          SetFirst("40"),
                                          SetSecond("70"),
                                          {"kill timer 4"},
                                          kEnumeration,
                                          {"save off"}})));
    EXPECT_EQ(g_monitors[0].physical[0].current, 40U);
    EXPECT_EQ(g_monitors[1].physical[0].current, 70U);
}

TEST_F(PwmCalls, APanelIsEnumeratedAndSetBeforeTheMonitors) {
    g_panelPresent = true;
    EXPECT_THAT(During([] { TogglePwmSafeByUser(); }),
                ElementsAreArray(InOrder({{"log: PWM-safe toggled ON by user"},
                                          kEnumeration,
                                          {"log: PWM-safe targets: 3 controllable (was 0)", "panel := 100"},
                                          SetFirst("80"),
                                          SetSecond("100"),
                                          kTimersStarted,
                                          {"save on"}})));
    VerifyPwmLock();
    TogglePwmSafeByUser();
    EXPECT_EQ(g_panelPercent, 45U);
}

TEST_F(PwmCalls, AMonitorThatCannotBeReadIsReadOncePerEnumerationAndNeverSet) {
    g_monitors[0].physical[0].readable = false;
    EXPECT_THAT(During([] { TogglePwmSafeByUser(); }),
                ElementsAreArray(InOrder({{"log: PWM-safe toggled ON by user"},
                                          kEnumeration,
                                          {"log: PWM-safe targets: 1 controllable (was 0)"},
                                          SetSecond("100"),
                                          kTimersStarted,
                                          {"save on"}})));
}

TEST_F(PwmCalls, AMonitorThatRefusesIsReadAndWrittenOnceInEachAssertion) {
    g_monitors[0].physical[0].settable = false;
    EXPECT_THAT(During([] { TogglePwmSafeByUser(); }),
                ElementsAreArray(InOrder({{"log: PWM-safe toggled ON by user"},
                                          kEnumeration,
                                          {"log: PWM-safe targets: 2 controllable (was 0)"},
                                          SetFirst("80"),
                                          SetSecond("100"),
                                          kTimersStarted,
                                          {"save on"}})));
    EXPECT_THAT(
        During([] { VerifyPwmLock(); }),
        ElementsAreArray(InOrder({{"kill timer 5"},
                                  kEnumeration,
                                  {"log: PWM-safe: 100% lock not confirmed (1 of 2) - reverting toggle"},
                                  kEnumeration,
                                  SetFirst("40"),
                                  SetSecond("70"),
                                  {"save off", "kill timer 4"},
                                  kEnumeration})));
    EXPECT_EQ(g_monitors[1].physical[0].current, 70U);
}

TEST_F(PwmCalls, AMonitorWithAnEmptyRangeIsTreatedAsAt100AndSetToItsMaximumBothWays) {
    g_monitors[0].physical[0] = {.handle = 11, .minimum = 60, .current = 60, .maximum = 60};
    Lock();
    EXPECT_THAT(g_calls, testing::Contains("write 11 60").Times(1));
    TogglePwmSafeByUser();
    EXPECT_THAT(g_calls, testing::Contains("write 11 60").Times(2));
}

TEST_F(PwmCalls, TheReleaseSkipsAMonitorThatWasUnpluggedWhileLocked) {
    TogglePwmSafeByUser();
    g_monitors[0].device = L"D9";
    VerifyPwmLock();
    EXPECT_TRUE(g_app.pwmLockConfirmed);
    g_calls.clear();
    ReleasePwmSafeLock();
    EXPECT_EQ(g_monitors[0].physical[0].current, 80U);
    EXPECT_EQ(g_monitors[1].physical[0].current, 70U);
}
