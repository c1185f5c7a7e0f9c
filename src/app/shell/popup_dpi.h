// The DPI of the popup's monitor: the stored value, and queries of windows and monitors.
#pragma once

#include "win32/platform.h"

// Stores a DPI (0 is treated as 96). Rebuilds the scaled resources if the DPI has changed or if they were
// never built.
void SetDpi(UINT dpi);

// Calls SetDpi with the DPI of the monitor on which the popup will appear; without a monitor, with the
// window's DPI; if the query fails, with the main window's.
void UpdateDpiForMonitor(HWND window, HMONITOR monitor);

// The window's DPI; 96 without a window or if Windows returns 0.
UINT DpiOfWindow(HWND window);
