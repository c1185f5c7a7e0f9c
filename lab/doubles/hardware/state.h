#pragma once

#include <windows.h>

// State shared by the lab and every Windows process that loads a double: C:\lab\hardware.state, mapped into
// the memory of each. It is an array of 64-bit numbers: first the counters below, then four numbers for each
// simulated display. The lab creates the file before a double is loaded; without the file no display exists.
// Each number is changed atomically, so there is no lock.
enum class Counter : int {
    kVersion = 0,
    // Incremented by the lab after each change of the script. The doubles read the file only after a change.
    kScriptSerial = 1,
    // The number of the latest recorded call.
    kCalls = 2,
    // Calls whose delay is running.
    kWaiting = 3,
    // Physical-monitor handles that are open.
    kHandles = 4,
    // WMI objects that have not been released.
    kObjects = 5,
    // Strings returned to the program in a VARIANT that it has not freed.
    kReturnedStrings = 6,
    // Strings that the program passed as arguments and has not freed.
    kPassedStrings = 7,
    // Calls that no correct program makes.
    kInvalidCalls = 8,
    // Incremented by the lab to end the delays that are running.
    kEndedDelays = 9,
    // Calls whose delay lasts until the lab ends it.
    kHeldCalls = 10,
};

// Adds `change` to a counter and returns its new value; 0 without the shared file.
LONG64 Count(Counter counter, LONG64 change);

// The brightness of the display in slot `slot`, counted from 0.
struct BrightnessState {
    LONG64 value;      // raw
    LONG64 driftTime;  // From this time (as in Now) the brightness is driftValue; 0: never.
    LONG64 driftValue;
};

BrightnessState ReadBrightnessState(LONG64 slot);
void WriteBrightnessState(LONG64 slot, const BrightnessState& state);

// Milliseconds since 1970, UTC, on the same clock as the lab's.
LONG64 Now();

// A delay of this many milliseconds or more lasts until the lab ends it.
constexpr LONG64 kUntilEnded = 3600000;

// The delay of a call that begins now. The lab can end it early. Counts the call until it is destroyed.
class Delay {
public:
    explicit Delay(LONG64 milliseconds);
    ~Delay();
    Delay(const Delay&) = delete;
    Delay& operator=(const Delay&) = delete;

    // Milliseconds; 0 at the end.
    LONG64 Left() const;

private:
    bool held_;
    LONG64 end_;
    LONG64 endedBefore_;
};
