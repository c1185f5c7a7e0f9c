// Mouse input that waits in the thread's queue for the popup while a posted message is handled.
#pragma once

// Dispatches the mouse input that waits for the popup, at most a hundred messages. Windows retrieves posted
// messages before input, so a press or release may still wait behind a posted message that came later. The
// handlers that run may open boxes and destroy the window.
void HandlePendingPopupInput();

// True while the user holds a slider. A drag whose button is no longer down, because the release went to
// another window, ends here.
bool IsSliderHeld();
