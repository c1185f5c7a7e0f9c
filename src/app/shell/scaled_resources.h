// Resources that depend on the DPI of the popup's monitor: the stored DPI and the icon drawn in the popup.
#pragma once

#include "win32/platform.h"

constexpr int kHeaderIconUnits = 22;  // its width and height, drawn as loaded

// Loads the popup's icon for the DPI in AppState, then destroys the previous one. If loading fails, the
// previous icon stays.
void RebuildScaledResources();

// Stores a DPI (0 is treated as 96). Rebuilds the resources if the DPI has changed or if they were never
// built.
void SetDpi(UINT dpi);

// Calls SetDpi with the DPI of the monitor on which the popup will appear; without a monitor, with the
// window's DPI.
void UpdateDpiForMonitor(HWND window, HMONITOR monitor);

// The window's DPI; 96 without a window or if Windows returns 0.
UINT DpiOfWindow(HWND window);
