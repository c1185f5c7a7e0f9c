// The one place that adds the icon and keeps track of it.
#pragma once

// Adds the tray icon unless it is there. False when the shell refuses it.
bool EnsureTrayIcon();
