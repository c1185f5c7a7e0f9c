// The main window's creation and destruction.
#pragma once

#include "win32/platform.h"

// WM_CREATE: asserts the lock on the backlight that the settings ask for. Displays are queried, so messages
// may be dispatched.
void OnCreate(HWND window);

// WM_DESTROY: restores the backlight and the screen, removes the tray icon, releases the single-instance
// mutex, frees what lives for the whole run and ends the message loop. Settings are not saved here.
void OnDestroy();
