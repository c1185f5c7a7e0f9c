// Brings the popup in front of other programs' windows, which Windows often refuses.
#pragma once

#include "win32/platform.h"

// Makes the window the foreground window. If Windows refuses, tries again without the foreground lock and
// with the foreground thread's input attached. False if Windows still refuses. On return the input is
// detached and the system's foreground lock time-out is restored.
bool BringToForeground(HWND window);
