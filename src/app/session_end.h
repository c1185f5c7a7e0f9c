// The end of the Windows session. Windows terminates a process that has not returned from WM_ENDSESSION after
// five seconds.
#pragma once

#include "win32/platform.h"

// WM_ENDSESSION: restores the backlight, the cursors and the gamma ramp, since Windows soon terminates the
// process without WM_DESTROY. Waits at most 4 s for the displays. If an installer requests the end of this
// program only, waits at most 25 s and ends the program. If the release thread cannot be created, restores
// the backlight itself, however long the displays take. `reason` is the message's lParam. Does nothing if
// `ending` is false.
void OnEndSession(bool ending, LPARAM reason);

// Called when the user uses the program: if the session was ending, it continues after all, and the filter
// and the lock are applied again as after a display change. Does nothing while a display operation runs or
// once the window is destroyed.
void ContinueSession();
