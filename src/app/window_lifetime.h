// The main window's beginning and end. What the program took over is given back here.
#pragma once

#include "win32/platform.h"

void OnCreate(HWND window);

// Gives back the screen, the tray icon and the single-instance mutex, frees what lives for the whole run and
// ends the message loop. Settings are not saved here.
void OnDestroy();

// WM_ENDSESSION: Windows ends the process soon, without WM_DESTROY.
void OnEndSession(bool ending);
