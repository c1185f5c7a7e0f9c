// Display changes from outside the program: display mode, DPI, and settling after any change.
#pragma once

#include "win32/platform.h"

// WM_DISPLAYCHANGE. Debounces: a burst of changes runs OnDisplaysSettled once.
void OnDisplayChange();

// WM_DPICHANGED. `suggested` is the window rectangle that Windows proposes, in pixels. Another program can
// send the message too: an address that cannot be read leaves the window where it is, and a DPI above 960 is
// ignored.
void OnDpiChanged(UINT dpi, const RECT* suggested);

// Timer. The displays have settled: reapplies the settings that Windows may have dropped.
void OnDisplaysSettled();
