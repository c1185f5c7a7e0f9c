// Where the popup goes, and how it comes and goes.
#pragma once

#include "win32/platform.h"

// The popup's top-left corner, in pixels: the work area's bottom-right corner less the margin, at the DPI in
// AppState; on a work area smaller than the popup the top-left corner wins.
POINT PlacePopup(const RECT& workArea);

// Looks at the displays anew, and shows the popup on the monitor under the mouse and brings it to the front.
// When Windows refuses the foreground it stays visible and does not hide itself before it has once been
// active.
void ShowPopup();

// Hides the popup. Notes when, unless it is hidden already: the tray click that took its activation away must
// not open it again.
void HidePopup();
