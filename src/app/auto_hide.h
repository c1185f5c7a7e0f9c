// The popup hides itself as soon as another program's window becomes active.
#pragma once

#include "win32/platform.h"

// WM_ACTIVATE; `other` is the window that gains the activation, null when Windows does not tell.
void OnActivate(WORD state, HWND other);

// Timer: a deactivation that Windows did not report is found by looking.
void OnAutoHideTimer();
