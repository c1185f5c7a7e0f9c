// Detects the restart after the gamma range fix. Windows applies the expanded range from its next start.
#pragma once

#include <cstdint>

// Whether the machine was started after `epoch`; false for an epoch of 0. Times are seconds since 1970.
// `tick` is GetTickCount64 in ms, which includes time asleep, so a resume is not a restart.
bool WasStartedAfter(std::uint64_t epoch, std::uint64_t now, std::uint64_t tick);

// Whether the range is expanded, this program confirmed the expansion, and the machine has been restarted
// since. Window thread.
bool IsRestartDoneSinceFix();
