// The strip between the sliders and the presets: the gamma banner, the PWM-safe card or the flicker hint.
#pragma once

#include "win32/platform.h"

// Draws whichever of the three AppState calls for.
void DrawStatusStrip(HDC dc);
