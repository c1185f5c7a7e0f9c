// Paints the popup into an off-screen bitmap and copies it to the window in one block, so that it does not
// flicker.
#pragma once

#include "win32/platform.h"

// Handles WM_PAINT.
void PaintPopup(HWND window);

// Maps the canvas to the client area of the main window and draws the current panel.
void PaintRoot(HDC dc);
