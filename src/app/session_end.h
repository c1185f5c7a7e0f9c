// The end of the Windows session, and the screen's restoration that it shares with the window's end. Windows
// forces a process that has not answered WM_ENDSESSION after five seconds.
#pragma once

#include "win32/platform.h"

// How long the window's end may wait, in ms, for a release of the backlight that is still under way.
constexpr DWORD kWindowEndLimit = 25000;

// WM_ENDSESSION: Windows ends the process soon, without WM_DESTROY. Restores the backlight, the cursors and
// the gamma ramp; returns after at most 4 s, or 25 s when an installer asks for the program's end only, and
// then destroys the window. `reason` is the message's lParam. Nothing happens when `ending` is false.
void OnEndSession(bool ending, LPARAM reason);

// The user is using the program: a session whose end was announced goes on. The filter and the lock come back
// as after a display change. Does nothing unless the session was ending, nor once the window is destroyed.
void ContinueSession();

// Restores the cursors and the gamma ramp. A release of the backlight that is under way comes first, but the
// screen waits no longer than 1 s for it; the call waits for it `limit` ms in all.
void RestoreScreen(DWORD limit);
