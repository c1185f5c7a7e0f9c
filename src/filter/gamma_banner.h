// The banner that offers the gamma range fix, and its withdrawal when the fix has not helped. Window thread
// only.
#pragma once

#include <cstdint>

// True when the machine was started after `epoch`. Times are seconds since 1970; `tick` is GetTickCount64 in
// ms, which counts on through sleep, so that a resume is no restart. False for an epoch of 0.
bool WasStartedAfter(std::uint64_t epoch, std::uint64_t now, std::uint64_t tick);

// True when the range was expanded, this program saw it happen, and the machine has restarted since.
bool IsRestartDoneSinceFix();

// True when Legacy Mode's ramps are rejected and the user can do something about it.
bool IsBannerVisible();

// Logs, once a run, that ramps are still rejected after the restart and the banner is therefore withdrawn.
// Painting and hit testing both call it before they ask IsBannerVisible.
void LogBannerDemotionOnce();
