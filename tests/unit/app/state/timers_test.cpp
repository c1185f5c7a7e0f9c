#include "app/state/timers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "support/seam.h"

namespace {

struct TimerCall {
    std::string what;
    HWND window;
    UINT_PTR id;
    UINT period;

    bool operator==(const TimerCall&) const = default;
};

std::vector<TimerCall> g_calls;
bool g_refused = false;

UINT_PTR WINAPI FakeSetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
    EXPECT_EQ(procedure, nullptr);
    g_calls.push_back({"set", window, id, period});
    return g_refused ? 0 : id;
}

BOOL WINAPI FakePostMessage(HWND window, UINT message, WPARAM id, LPARAM) {
    EXPECT_EQ(message, static_cast<UINT>(WM_TIMER));
    g_calls.push_back({"post", window, id, 0});
    return TRUE;
}

BOOL WINAPI FakeKillTimer(HWND window, UINT_PTR id) {
    g_calls.push_back({"kill", window, id, 0});
    return TRUE;
}

HWND const kWindow = reinterpret_cast<HWND>(0x1234);

class Timers : public testing::Test {
protected:
    void SetUp() override {
        g_calls.clear();
        g_refused = false;
        g_app.mainWindow = kWindow;
    }
};

}  // namespace

AMBREL_SEAM(SetTimer, FakeSetTimer);
AMBREL_SEAM(KillTimer, FakeKillTimer);
AMBREL_SEAM(PostMessageW, FakePostMessage);

TEST_F(Timers, EachTimerHasItsIdAndPeriod) {
    StartTimer(TimerId::SaveSettings);
    StartTimer(TimerId::DisplaySettle);
    StartTimer(TimerId::CopiedIndicationEnd);
    StartTimer(TimerId::PwmSafePoll);
    StartTimer(TimerId::PwmSafeVerify);
    StartTimer(TimerId::PopupAutoHide);
    StartTimer(TimerId::TrayRetry);
    StartTimer(TimerId::GammaFixPoll);
    const std::vector<TimerCall> expected = {
        {"set", kWindow, 1, 500},  {"set", kWindow, 2, 300},  {"set", kWindow, 3, 5100},
        {"set", kWindow, 4, 2000}, {"set", kWindow, 5, 750},  {"set", kWindow, 6, 150},
        {"set", kWindow, 7, 3000}, {"set", kWindow, 8, 2000},
    };
    EXPECT_EQ(g_calls, expected);
}

TEST_F(Timers, TheLongPeriodAppliesAfterResumeAndToASlowedPoll) {
    StartTimer(TimerId::DisplaySettle, TimerPeriod::Long);
    StartTimer(TimerId::PwmSafePoll, TimerPeriod::Long);
    const std::vector<TimerCall> expected = {{"set", kWindow, 2, 1200}, {"set", kWindow, 4, 30000}};
    EXPECT_EQ(g_calls, expected);
}

TEST_F(Timers, RestartingKillsBeforeItSets) {
    RestartTimer(TimerId::SaveSettings);
    const std::vector<TimerCall> expected = {{"kill", kWindow, 1, 0}, {"set", kWindow, 1, 500}};
    EXPECT_EQ(g_calls, expected);
}

TEST_F(Timers, TheActionOfAOneShotTimerThatWindowsRefusesIsPostedImmediately) {
    g_refused = true;
    StartTimer(TimerId::SaveSettings);
    StartTimer(TimerId::PwmSafeVerify);
    const std::vector<TimerCall> expected = {
        {"set", kWindow, 1, 500}, {"post", kWindow, 1, 0}, {"set", kWindow, 5, 750}, {"post", kWindow, 5, 0}};
    EXPECT_EQ(g_calls, expected);
}

TEST_F(Timers, APeriodicTimerThatWindowsRefusesIsNotPosted) {
    g_refused = true;
    StartTimer(TimerId::PwmSafePoll);
    StartTimer(TimerId::TrayRetry);
    const std::vector<TimerCall> expected = {{"set", kWindow, 4, 2000}, {"set", kWindow, 7, 3000}};
    EXPECT_EQ(g_calls, expected);
}

TEST_F(Timers, WithoutAMainWindowNothingIsSetOrKilled) {
    g_app.mainWindow = nullptr;
    StartTimer(TimerId::SaveSettings);
    StopTimer(TimerId::SaveSettings);
    RestartTimer(TimerId::DisplaySettle);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(Timers, OnlyTheIdsOfTheTableAreRecognised) {
    EXPECT_FALSE(IsTimerId(0));
    EXPECT_TRUE(IsTimerId(1));
    EXPECT_TRUE(IsTimerId(8));
    EXPECT_FALSE(IsTimerId(9));
    EXPECT_FALSE(IsTimerId(static_cast<WPARAM>(-1)));
}

TEST_F(Timers, OnlyThePollsAndTheAutoHideRepeat) {
    EXPECT_TRUE(IsOneShot(TimerId::SaveSettings));
    EXPECT_TRUE(IsOneShot(TimerId::DisplaySettle));
    EXPECT_TRUE(IsOneShot(TimerId::CopiedIndicationEnd));
    EXPECT_FALSE(IsOneShot(TimerId::PwmSafePoll));
    EXPECT_TRUE(IsOneShot(TimerId::PwmSafeVerify));
    EXPECT_FALSE(IsOneShot(TimerId::PopupAutoHide));
    EXPECT_FALSE(IsOneShot(TimerId::TrayRetry));
    EXPECT_FALSE(IsOneShot(TimerId::GammaFixPoll));
}
