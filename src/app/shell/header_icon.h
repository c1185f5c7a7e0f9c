// The small icon that the popup draws, loaded for the DPI of its monitor.
#pragma once

constexpr int kHeaderIconUnits = 22;  // its width and height, drawn as loaded

// Loads the icon for the DPI in AppState, then destroys the previous one. If loading fails, the previous icon
// stays.
void RebuildScaledResources();
