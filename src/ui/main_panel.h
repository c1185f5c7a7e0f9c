// The main panel, which the popup shows by default: sliders, status strip, presets and power button.
#pragma once

#include "win32/platform.h"

// Draws the whole panel from AppState onto the canvas.
void DrawMainPanel(HDC dc);
