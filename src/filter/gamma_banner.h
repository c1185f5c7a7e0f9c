// The banner that offers the gamma range fix. It is withdrawn if the fix has not helped. Window thread only.
#pragma once

#include <cstdint>

// Whether the machine was started after `epoch`; false for an epoch of 0. Times are seconds since 1970.
// `tick` is GetTickCount64 in ms, which includes time asleep, so a resume is not a restart.
bool WasStartedAfter(std::uint64_t epoch, std::uint64_t now, std::uint64_t tick);

// Whether the range is expanded, this program confirmed the expansion, and the machine has been restarted
// since.
bool IsRestartDoneSinceFix();

// Whether Legacy Mode's ramps are rejected and the user can do something about it.
bool IsBannerVisible();

// Logs once per run that ramps are still rejected after the restart, which withdraws the banner. Painting,
// hit testing and accessibility call this before IsBannerVisible.
void LogBannerDemotionOnce();
