// The notification-area icon: its picture and tip show whether the filter is on. Used as it was before
// versions of the interface: mouse messages arrive as they are in lParam.
#pragma once

// Adds the icon. False when the shell refused, for example before the taskbar is up.
bool AddTrayIcon();

// Brings the icon and its tip up to date. A refusal is ignored: the next update tries again.
void UpdateTrayIcon();

// Removes the icon, if it is there.
void RemoveTrayIcon();
