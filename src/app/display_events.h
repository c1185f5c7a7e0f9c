// What happens to the displays from outside: another mode, another DPI, and settling after any change.
#pragma once

#include "win32/platform.h"

// WM_DISPLAYCHANGE: a burst of them gives one settling.
void OnDisplayChange();

// WM_DPICHANGED. `suggested` is the rectangle that Windows proposes for the window, in pixels.
void OnDpiChanged(UINT dpi, const RECT* suggested);

// Timer: the displays have settled; what Windows may have dropped is applied again.
void OnDisplaysSettled();
