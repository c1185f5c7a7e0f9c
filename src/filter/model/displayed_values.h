// Warmth and brightness as they are displayed: in whole kelvin and whole percent.
#pragma once

#include <cstddef>

// The colour temperature of a warmth intensity, rounded half away from zero.
int RoundedKelvin(double intensity);

// "4,000K", or "650K" below 1000 K, truncated to the capacity.
void FormatKelvinLabel(double intensity, wchar_t* label, std::size_t capacity);

// Brightness in whole percent, truncated: 0.999 is 99.
int TruncatedPercent(double brightness);
