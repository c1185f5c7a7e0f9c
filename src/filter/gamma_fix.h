// The offer to lift Windows' gamma range limit: a question, an elevated run of this program, and the wait
// until the registry shows it. Window thread only.
#pragma once

#include <cstdint>

// The click on the banner. Asks, and launches the elevated run; a second click launches another and waits
// anew.
void StartGammaRangeFix();

// Timer: confirms the lifted limit, saves the time of it and asks for a restart through the banner; gives up
// after two minutes.
void OnGammaFixTimer();

// The same with the present time handed in: seconds since 1970 and GetTickCount64 in ms.
void PollGammaFix(std::uint64_t now, std::uint64_t tick);
