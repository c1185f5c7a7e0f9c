// Restores the screen when the session ends or the window is destroyed.
#pragma once

#include "win32/platform.h"

// Restores the cursors and the gamma ramp, and waits up to `timeoutMs` for a running release of the
// backlight. The screen is restored after the release, but at the latest after 1 s.
void RestoreScreen(DWORD timeoutMs);
