// A clock that only the test advances, and the program's timers on it.
#pragma once

#include <cstdint>

// Replaces the clocks and the timers for the whole process. Call after InstallSimulatedPlatform.
void InstallSimulatedTime();

// Forgets the timers of an earlier session.
void ResetSimulatedTime();

// Advances the clock to a time, in ms since the start, and sends each WM_TIMER when it is due.
void RunUntil(std::uint64_t time);

std::uint64_t SimulatedTime();
