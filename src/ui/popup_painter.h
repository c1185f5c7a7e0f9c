// The popup's frame: one off-screen picture, copied to the window in one block, so that nothing flickers.
#pragma once

#include "win32/platform.h"

// Handles the window's WM_PAINT.
void PaintPopup(HWND window);

// Sets up the canvas, stretched over the window's client area, and draws the panel that AppState shows.
void PaintRoot(HDC dc);
