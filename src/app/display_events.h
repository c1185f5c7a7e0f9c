// Display changes from outside the program: display mode, DPI, and settling after any change.
#pragma once

#include "win32/platform.h"

// WM_DISPLAYCHANGE. Debounces: a burst of changes runs OnDisplaysSettled once.
void OnDisplayChange();

// WM_DPICHANGED. `suggested` is the window rectangle that Windows proposes, in pixels; may be null.
void OnDpiChanged(UINT dpi, const RECT* suggested);

// Timer. The displays have settled: reapplies the settings that Windows may have dropped.
void OnDisplaysSettled();
