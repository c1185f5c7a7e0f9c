// The banner that offers the gamma range fix. It is withdrawn if the fix has not helped. Window thread only.
#pragma once

// Whether Legacy Mode's ramps are rejected and the user can do something about it.
bool IsBannerVisible();

// Logs once per run that ramps are still rejected after the restart, which withdraws the banner. Painting,
// hit testing and accessibility call this before IsBannerVisible.
void LogBannerDemotionOnce();
