// The end of the Windows session, and the restoration of the screen that it shares with the destruction of
// the window. Windows terminates a process that has not returned from WM_ENDSESSION after five seconds.
#pragma once

#include "win32/platform.h"

// How long the destruction of the window may wait, in ms, for a release of the backlight that is running.
constexpr DWORD kWindowEndTimeout = 25000;

// WM_ENDSESSION: restores the backlight, the cursors and the gamma ramp, since Windows soon terminates the
// process without WM_DESTROY. Waits at most 4 s for the displays. If an installer requests the end of this
// program only, waits at most 25 s and destroys the window. If the release thread cannot be created, restores
// the backlight itself, however long the displays take. `reason` is the message's lParam. Does nothing if
// `ending` is false.
void OnEndSession(bool ending, LPARAM reason);

// Called when the user uses the program: if the session was ending, it continues after all, and the filter
// and the lock are applied again as after a display change. Does nothing while a display operation runs or
// once the window is destroyed.
void ContinueSession();

// Restores the cursors and the gamma ramp, and waits up to `timeoutMs` for a running release of the
// backlight. The screen is restored after the release, but at the latest after 1 s.
void RestoreScreen(DWORD timeoutMs);
