#pragma once

#include <windows.h>

// What the lab and every Windows process with a double share: C:\lab\hardware.state, mapped into memory by
// all of them. It is an array of 64-bit numbers: first the counters below, then four numbers for each
// simulated display. The lab makes the file before a double is loaded; without it every display seems to be
// absent. Single numbers only are changed, each at once, so nobody has to wait for a lock.
enum class Counter : int {
    kVersion = 0,
    // Raised by the lab after each new script, so that nobody reads the file again for nothing.
    kScriptSerial = 1,
    // The number of the latest recorded call.
    kCalls = 2,
    // Calls that are being delayed at this moment.
    kWaiting = 3,
    // Physical-monitor handles handed out and not destroyed.
    kHandles = 4,
    // Objects of WMI that are alive.
    kObjects = 5,
    // Texts handed to the caller (in a VARIANT) and not freed.
    kStringsOut = 6,
    // Texts that the caller passed as arguments and did not free.
    kStringsIn = 7,
    // Calls that no correct program makes.
    kMistakes = 8,
};

// Raises a counter by `change` and returns its new value; 0 without the shared file.
LONG64 Count(Counter counter, LONG64 change);

// The three numbers of a display's knob. `slot` counts from 0.
struct KnobState {
    LONG64 value;      // What the display shows.
    LONG64 driftTime;  // From this moment on (milliseconds as in Now) it shows driftValue; 0: never.
    LONG64 driftValue;
};

KnobState ReadKnob(LONG64 slot);
void WriteKnob(LONG64 slot, const KnobState& knob);

// Milliseconds since 1970, UTC: the clock that Windows and the lab have in common.
LONG64 Now();
