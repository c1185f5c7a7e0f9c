// The power button of the main panel, which turns the filter on and off.
#pragma once

#include "win32/platform.h"

// Draws the button from AppState onto the canvas.
void DrawPowerButton(HDC dc);
