// The release of the lock at a session's end, on a thread of its own. COM rejects outgoing calls while the
// window's thread handles another process's WM_ENDSESSION (RPC_E_CANTCALLOUT_ININPUTSYNCCALL), and a display
// may answer later than Windows waits. The thread works on values that it has taken over; it neither reads
// nor writes AppState and logs nothing, so it may still run when the process ends.
#pragma once

#include "app/state/app_state.h"

// Enumerates the displays and sets each to its saved value, which is removed from `saved` before the call.
// Values that no display accepted are in `saved` at the end. The session's end may empty `saved` in the
// meantime, and then restores the rest itself. Any thread that has joined COM.
void RestoreBrightness(SavedBrightness* saved);

// Takes the saved values out of AppState and starts to restore them. Does nothing when there are none or when
// a release is still under way. False when no thread can be started; the values then stay in AppState. Window
// thread, as are the two below.
bool StartPwmSafeRelease();

// Waits until the release has ended, but no longer than `limit` ms. Returns at once when none is under way.
void WaitForPwmSafeRelease(DWORD limit);

// Collects the result of a release for a session that goes on: values that no display accepted are saved
// again. False while the release is under way.
bool FinishPwmSafeRelease();
