// The popup's position, and showing and hiding it.
#pragma once

#include "win32/platform.h"

// The popup's top-left corner in pixels, at the DPI in AppState: the work area's bottom-right corner minus
// the popup's size and the margin. On a work area smaller than the popup, the top-left corner of the popup
// stays visible.
POINT PopupPosition(const RECT& workArea);

// Queries the displays again, shows the popup on the monitor under the mouse and brings it to the front. If
// Windows refuses the foreground, the popup stays visible and does not hide itself until it has been active
// once.
void ShowPopup();

// Hides the popup. Records the time, unless the popup is already hidden, because the tray click that
// deactivated it must not show it again.
void HidePopup();
