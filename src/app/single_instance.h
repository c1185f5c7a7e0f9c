// Only one copy runs on a machine. A second start signals the first one.
#pragma once

// Creates the machine-wide mutex and stores it in AppState. False if another copy holds it, even one of
// another user.
bool ClaimSingleInstance();

// Makes the running copy show its popup, and permits it to come to the front. Does nothing if its window
// cannot be found, because it belongs to another user or does not exist yet.
void SignalFirstInstance();

// Lets another copy start. Does nothing if the mutex is not held.
void ReleaseSingleInstance();
