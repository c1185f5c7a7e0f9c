// The common refresh after a change of state.
#pragma once

// Invalidates the popup and updates the tray icon and its tooltip. The popup's layout is not stored, so this
// also lays it out again. Does nothing without a window.
void RefreshPopupAndTray();
