// A visible popup of the program in the benchmark's own process: the shipped drawing and message handling,
// without the start-up that queries displays and files.
#pragma once

#include <functional>

#include "win32/platform.h"

// Creates the window with the size of `dpi` and the resources that the drawing needs, and stores them in
// AppState. While `*replacePaint` is set, WM_PAINT calls it instead of the program.
void CreateBenchPopup(UINT dpi, const std::function<void()>* replacePaint);

// Invalidates the window and paints it.
void PaintNow();

void DestroyBenchPopup();
