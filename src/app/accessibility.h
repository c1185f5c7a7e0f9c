// Messages of assistive technology: requests for the popup's accessible object, and requested actions.
#pragma once

#include "win32/platform.h"

// WM_GETOBJECT. Requests for anything except the client area are forwarded to Windows.
LRESULT OnGetObject(HWND window, WPARAM wParam, LPARAM lParam);

// kMessageAccessibleActions: performs the requested actions. Like a click, they show that the program is in
// use.
void OnAccessibleActions();
