// Creation and destruction of the main window.
#pragma once

#include "win32/platform.h"

// WM_CREATE, once: stores the window in AppState, admits the taskbar's messages to an elevated process,
// registers for power events, recalls the brightness that an earlier run did not restore, and asserts the
// lock on the backlight if the settings have PWM-safe mode on. The queries of the displays dispatch messages.
void OnCreate(HWND window);

// WM_DESTROY, once: restores the backlight and the screen, removes the tray icon, frees the drawing
// resources, releases the single-instance mutex and ends the message loop. Does not save the settings.
void OnDestroy();

// Destroys the window. If Windows refuses, performs the steps of OnDestroy anyway, and the end of the process
// destroys the window.
void DestroyMainWindow();
