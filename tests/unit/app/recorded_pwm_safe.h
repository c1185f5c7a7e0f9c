// Replaces the PWM-safe controller in a test program. Records each call as "pwm ...".
#pragma once

#include <cstdint>

#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_pwm_safe);

// Runs once, during the next display query, like a message that is dispatched while the displays answer.
extern void (*g_duringDisplayQuery)();

// The release at a session's end: whether no thread can be created for it, how long it takes, and the clock
// that a wait for it advances, if any.
extern bool g_noThreadForRelease;
extern std::uint64_t g_releaseDuration;  // ms
extern std::uint64_t* g_waitClock;       // ms

// How often a release was to be collected.
extern int g_releasesCollected;
