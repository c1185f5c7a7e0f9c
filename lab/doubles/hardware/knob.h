#pragma once

#include "script.h"

// The brightness knob of a simulated display, a monitor or a panel. Fields of its line:
//     slot       where its numbers are in the shared state
//     behaviour  ok, ignores (a set is answered well and does nothing), sticks (every set leads to the value
//                `at`), drifts (a set is obeyed, and `after` milliseconds later the display shows `at`)
//     at, after  see above

// What the display shows now.
LONG64 KnobValue(const Row& display);
// What happens when a set with this value succeeds.
void TurnKnob(const Row& display, LONG64 value);
