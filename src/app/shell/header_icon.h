// The small icon that the popup draws, loaded for the DPI of its monitor.
#pragma once

constexpr int kHeaderIconUnits = 22;  // its width and height in design units; never stretched

// Rebuilds the resources that depend on the DPI, of which the icon is the only one: loads it for the DPI in
// AppState, then destroys the previous one. If loading fails, the previous icon stays.
void RebuildScaledResources();
