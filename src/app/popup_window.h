// The popup's window class and window. The popup is the program's main window.
#pragma once

// Registers the class with the background brush and the icon in AppState. False if Windows refuses.
bool RegisterPopupClass();

// Creates the window, hidden, with rounded corners and the size for the DPI of its monitor. WM_CREATE stores
// it in AppState and queries the displays. False if Windows refuses.
bool CreatePopupWindow();
