// The window procedure of the popup window.
#pragma once

#include "win32/platform.h"

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
