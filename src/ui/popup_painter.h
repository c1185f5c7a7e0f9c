// Paints the popup into an off-screen bitmap and copies it to the window in one block, so that it does not
// flicker.
#pragma once

#include "win32/platform.h"

// Handles WM_PAINT. When Windows provides no context to paint in, the window keeps its contents until the
// next change.
void PaintPopup(HWND window);

// Maps the canvas to the client area of the main window and draws the current panel.
void PaintRoot(HDC dc);
