// Messages of assistive technology: requests for the popup's accessible object, and the actions that it asks
// for.
#pragma once

#include "win32/platform.h"

// WM_GETOBJECT. Windows itself answers requests for anything but the client area.
LRESULT OnGetObject(HWND window, WPARAM wParam, LPARAM lParam);

// kMessageAccessibleActions: performs what was requested. That is use of the program, as a click is.
void OnAccessibleActions();
