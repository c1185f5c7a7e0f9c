// One copy runs on a machine; a second start wakes the first.
#pragma once

// Takes the machine-wide mutex and keeps it in AppState. False when another copy holds it, be it another
// user's.
bool ClaimSingleInstance();

// Has the copy that runs show its popup, and lets it come to the front. Nothing happens when its window
// cannot be found, as when it is another user's or still starting.
void WakeFirstInstance();

// Lets another copy start. Does nothing when the mutex is not held.
void ReleaseSingleInstance();
