// The only function that adds the tray icon and records it in AppState.
#pragma once

// Adds the tray icon unless it exists. False if the shell refuses it.
bool EnsureTrayIcon();
