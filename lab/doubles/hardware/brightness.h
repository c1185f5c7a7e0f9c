#pragma once

#include "script.h"

// The brightness of a simulated display, a monitor or a panel. Fields of its line in the script:
//     slot       the index of its brightness in the shared state
//     behaviour  ok; ignores (a set reports success and does nothing); sticks (every set results in the value
//                `at`); drifts (`after` milliseconds after a set, the brightness changes to `at`)
//     at, after  see above

// The current raw brightness.
LONG64 DisplayedBrightness(const Row& display);

// Sets the raw brightness according to the display's behaviour.
void SetDisplayedBrightness(const Row& display, LONG64 value);
