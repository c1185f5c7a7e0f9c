// The status strip between the sliders and the presets: the gamma banner, the PWM-safe card or the flicker
// hint.
#pragma once

#include "win32/platform.h"

// Draws the one that CurrentStatusStrip selects.
void DrawStatusStrip(HDC dc);
