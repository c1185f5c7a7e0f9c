// The picture of the main panel at 96 DPI, as it is after a first start.
#pragma once

#include "win32/platform.h"

// Fonts and icon of the panel, created at the start.
void FloorCreateResources();

// Answers WM_PAINT. `card`: a display has answered, so the strip shows the card instead of the hint.
void FloorPaint(HWND window, bool card);
