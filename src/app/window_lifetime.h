// The main window's beginning and end. What the program took over is given back here.
#pragma once

#include "win32/platform.h"

// WM_CREATE: the lock on the backlight that the settings ask for is asserted. Displays are asked, so messages
// may be dispatched.
void OnCreate(HWND window);

// Gives back the backlight, the screen, the tray icon and the single-instance mutex, frees what lives for the
// whole run and ends the message loop. Settings are not saved here.
void OnDestroy();

// WM_ENDSESSION: Windows ends the process soon, without WM_DESTROY. `reason` is the message's lParam; when an
// installer asks for the program's end only, the window is destroyed.
void OnEndSession(bool ending, LPARAM reason);
