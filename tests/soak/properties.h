// Properties of the program's state that hold between any two messages.
#pragma once

void RequireValuesInRange();

// Within a session: also that the screen, the cursors and the monitor agree with the state.
void RequireConsistentState();

// That the popup can be shown at its full size.
void RequirePopupCanBeShown();
