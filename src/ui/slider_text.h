// The values of the sliders as text: as shown in the value boxes, and as assistive technology sets them.
#pragma once

#include <cstddef>

#include "app/state/app_state.h"

constexpr std::size_t kSliderTextCapacity = 16;

// The current value as shown: "2,700K" for WARMTH, "85%" for BRIGHTNESS. Empty for Slider::None.
void FormatSliderText(Slider slider, wchar_t (&text)[kSliderTextCapacity]);

// Reads a value of `length` characters: whole percent of the slider with a percent sign, for WARMTH also
// whole kelvin as "2700K" or "2,700K". False for anything else. The value is not clamped. A value in range,
// once set, is displayed as the number that was read.
bool ParseSliderText(Slider slider, const wchar_t* text, std::size_t length, double* value);
