// The notification-area icon. Its image and tooltip show whether the filter is on. Uses the original version
// of the interface, whose callback passes the mouse message in lParam.
#pragma once

// Adds the icon. False if the shell refuses, for example before the taskbar exists.
bool AddTrayIcon();

// Updates the icon and its tooltip. A refusal is ignored: the next update tries again.
void UpdateTrayIcon();

// Removes the icon, if it exists.
void RemoveTrayIcon();
