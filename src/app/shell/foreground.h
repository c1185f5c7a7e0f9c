// Getting the popup in front of other programs' windows, which Windows does not grant to everybody.
#pragma once

#include "win32/platform.h"

// Makes the window the foreground window, by insistence if need be. False when Windows still refuses. Other
// threads' input is as before on return, and so is the system's foreground lock time-out if it could be read.
bool BringToForeground(HWND window);
