// What depends on the DPI of the popup's monitor: the stored DPI itself and the icon drawn in the popup.
#pragma once

#include "win32/platform.h"

constexpr int kHeaderIconUnits = 22;  // its width and height, drawn as loaded

// Loads the popup's icon for the DPI in AppState; the one before is destroyed once the new one is in place,
// and stays when there is no new one.
void RebuildScaledResources();

// Stores a DPI (0 counts as 96) and rebuilds the resources when it differs from the stored one, or when they
// were never built.
void AdoptDpi(UINT dpi);

// The same with the DPI of the monitor on which the popup will appear; without a monitor, with the window's.
void UpdateDpiForMonitor(HWND window, HMONITOR monitor);

// The window's DPI; 96 without a window or when Windows answers 0.
UINT DpiOfWindow(HWND window);
