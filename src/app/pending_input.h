// Mouse input for the popup that is still queued while a posted message is handled.
#pragma once

// Dispatches the popup's queued mouse input, at most 100 messages. Windows retrieves posted messages before
// input, so a press or release may still be queued behind a posted message that arrived later. The handlers
// that run may open boxes and destroy the window.
void HandlePendingPopupInput();
