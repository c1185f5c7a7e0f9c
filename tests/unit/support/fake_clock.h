// Replaces both clocks in a test program: time passes only when the test advances it.
#pragma once

#include <cstdint>

#include "support/seam.h"

AMBREL_USES_SEAMS(fake_clock);

inline std::uint64_t g_clock = 0;  // seconds since 1970, for time()
inline std::uint64_t g_tick = 0;   // ms since the machine was started, for GetTickCount64()
