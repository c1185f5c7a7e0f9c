// The common refresh after a change of state.
#pragma once

// Has the popup repainted and brings the tray icon and its tip up to date. Nothing of the popup's layout is
// stored, so this also lays it out again. Without a window it does nothing.
void RefreshPopupAndTray();
