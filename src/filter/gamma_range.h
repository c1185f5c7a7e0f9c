// Windows refuses strong gamma ramps until its range limit is lifted in the registry and the machine
// restarted.
#pragma once

#include <cstdint>

// The switch of the program's own elevated run that lifts the limit.
constexpr wchar_t kExpandGammaRangeSwitch[] = L"--expand-gamma-range";

// True when the registry holds the lifted limit. A value of another type, or one that cannot be read, is
// none.
bool IsGammaRangeExpanded();

// Writes the lifted limit, which takes administrator's rights. False when Windows refused.
bool ExpandGammaRange();

// The elevated run: lifts the limit and says in a box what came of it. Returns the exit code, 0 or 1.
int RunGammaRangeHelper();

// True when the machine was started after `epoch`. Times are seconds since 1970; `tick` is GetTickCount64 in
// ms, which counts on through sleep, so that a resume is no restart. False for an epoch of 0.
bool WasStartedAfter(std::uint64_t epoch, std::uint64_t now, std::uint64_t tick);

// True when the range was expanded, this program saw it happen, and the machine has restarted since.
bool IsRestartDoneSinceFix();

// True when Legacy Mode's ramps are refused and the user can do something about it. Once the restart has not
// helped, the banner is withdrawn; the first time in a run that is logged. Painting and hit testing both ask
// here.
bool IsBannerVisible();
