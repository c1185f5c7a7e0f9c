// Windows refuses strong gamma ramps until its range limit is lifted in the registry and the machine
// restarted. What the popup must know of that: whether to show the banner, and whether the restart has
// happened.
#pragma once

#include <cstdint>

// True when the machine was started after `epoch`. Times are seconds since 1970; `tick` is GetTickCount64 in
// ms, which counts on through sleep, so that a resume is no restart. False for an epoch of 0.
bool WasStartedAfter(std::uint64_t epoch, std::uint64_t now, std::uint64_t tick);

// True when the range was expanded, this program saw it happen, and the machine has restarted since.
bool IsRestartDoneSinceFix();

// True when Legacy Mode's ramps are refused and the user can do something about it. Once the restart has not
// helped, the banner is withdrawn; the first time in a run that is logged. Painting and hit testing both ask
// here.
bool IsBannerVisible();
