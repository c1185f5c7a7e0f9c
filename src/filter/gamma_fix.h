// The fix for Windows' gamma range limit: a question, an elevated run of this program, and polling until the
// registry shows the result. Window thread only.
#pragma once

#include <cstdint>

// Handles a click on the banner: asks the user and launches the elevated run. A second click launches another
// run and restarts the time-out.
void StartGammaRangeFix();

// Timer. When the registry shows the expanded range, saves the time and refreshes the banner, which then asks
// for a restart. Gives up after two minutes.
void OnGammaFixTimer();

// OnGammaFixTimer for a given time: seconds since 1970, and GetTickCount64 in ms.
void PollGammaFix(std::uint64_t now, std::uint64_t tick);
