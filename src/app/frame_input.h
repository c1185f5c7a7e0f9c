// Input for the frame of a window: title bar, borders, scroll bars, window menu.
#pragma once

#include "win32/platform.h"

// Whether the message is input for a frame. The popup has none, so only another program sends it.
// DefWindowProcW would start a loop that lasts until the user releases a mouse button or chooses from a menu,
// and an open message box could not be closed in the meantime.
bool IsFrameInput(UINT message, WPARAM wParam);
