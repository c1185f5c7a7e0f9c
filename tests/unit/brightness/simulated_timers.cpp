#include "brightness/simulated_timers.h"

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/seam.h"

AMBREL_SEAM_SET(simulated_timers);

std::uint64_t g_clock;
SimulatedTimers g_timers;

namespace {

UINT_PTR WINAPI FakeSetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
    EXPECT_EQ(window, g_app.mainWindow);
    EXPECT_EQ(procedure, nullptr);
    g_timers[id] = {g_clock + period, period};
    return id;
}

BOOL WINAPI FakeKillTimer(HWND window, UINT_PTR id) {
    EXPECT_EQ(window, g_app.mainWindow);
    return g_timers.erase(id) != 0;
}

}  // namespace

AMBREL_SEAM(SetTimer, FakeSetTimer);
AMBREL_SEAM(KillTimer, FakeKillTimer);

std::uintptr_t NextDueTimer(std::uint64_t until) {
    std::uintptr_t next = 0;
    for (const auto& [id, timer] : g_timers) {
        if (timer.due <= until && (next == 0 || timer.due < g_timers[next].due)) next = id;
    }
    if (next == 0) {
        g_clock = until;
        return 0;
    }
    g_clock = g_timers[next].due;
    g_timers[next].due += g_timers[next].period;
    return next;
}
