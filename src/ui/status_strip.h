// The status strip between the sliders and the presets: the gamma banner, the PWM-safe card or the flicker
// hint.
#pragma once

#include "win32/platform.h"

// Draws the one that CurrentStatusStrip selects.
void DrawStatusStrip(HDC dc);

// The text of the banner, even if the strip does not show it.
const wchar_t* BannerText();

// Whether the hint is drawn in amber: the filter dims the picture enough to replace the backlight's dimming.
bool IsHintLit();
