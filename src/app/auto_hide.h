// Hides the popup when another program's window becomes active.
#pragma once

#include "win32/platform.h"

// WM_ACTIVATE. `other` is the window that gains the activation, or null if Windows does not identify it.
void OnActivate(WORD state, HWND other);

// Timer. Polls the foreground window to detect a deactivation that Windows did not report.
void OnAutoHideTimer();
