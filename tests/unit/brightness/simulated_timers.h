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

using SimulatedTimers = std::map<std::uintptr_t, SimulatedTimer>;  // running timers by id

extern std::uint64_t g_clock;  // ms
extern SimulatedTimers g_timers;

// Advances the clock to the earliest timer that is due by `until`, starts its next period and returns its id.
// If there is none, advances the clock to `until` and returns 0.
std::uintptr_t NextDueTimer(std::uint64_t until);
