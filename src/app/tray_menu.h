// The menu of the tray icon.
#pragma once

// Shows the menu at the pointer and performs the chosen command, which may destroy the window. Handles queued
// input of the popup first. Does nothing while the menu is open or the user holds a slider.
void ShowTrayMenu();
