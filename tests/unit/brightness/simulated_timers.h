// The main window's timers on a clock that only the test moves.
#pragma once

#include <cstdint>
#include <map>

#include "support/seam.h"

AMBREL_USES_SEAMS(simulated_timers);

struct SimulatedTimer {
    std::uint64_t due = 0;  // ms
    std::uint32_t period = 0;

    bool operator==(const SimulatedTimer&) const = default;
};

using SimulatedTimers = std::map<std::uintptr_t, SimulatedTimer>;  // those that run, by id

extern std::uint64_t g_clock;  // ms
extern SimulatedTimers g_timers;

// Moves the clock to the earliest timer that falls due up to `until` and starts its next period. 0 when there
// is none; then the clock stands at `until`.
std::uintptr_t NextDueTimer(std::uint64_t until);
