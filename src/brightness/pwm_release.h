// The release of the lock at the end of a session, on a separate thread. COM rejects outgoing calls while the
// window thread handles a WM_ENDSESSION that another process sends (RPC_E_CANTCALLOUT_ININPUTSYNCCALL), and a
// display may take longer to answer than Windows waits. The thread owns the values that it restores, does not
// access AppState and logs nothing, so it may still be running when the process ends.
#pragma once

#include "win32/platform.h"

// Moves the saved values out of AppState and starts the thread that restores them. Does nothing if there are
// no values or a release is running. False if the thread cannot be created; the values are then still in
// AppState. Window thread.
bool StartPwmSafeRelease();

// Waits for a running release, for at most `timeoutMs`. If it has ended, deletes the values that it has
// restored from the restore record. Window thread.
void WaitForPwmSafeRelease(DWORD timeoutMs);

// Frees an ended release and, with the mode on, moves the values that no display has accepted back to
// AppState, for a session that continues after all. False while a release is running. Window thread.
bool FinishPwmSafeRelease();
