// The only entry point for changes of the screen's colour. Every module applies and clears the filter here,
// whichever pipeline is in use. Window thread only.
#pragma once

#include "filter/model/warmth.h"

// Applies the filter in AppState to the screen, or clears it if it is off or the program is terminating. If
// the Magnification API refuses the matrix, may switch to Legacy Mode (legacy_fallback.h). Never initialises
// a pipeline; without one it has no effect.
void ApplyFilter();

// Removes the effect of the pipeline in use from the screen.
void ClearFilter();

// Sets the preset's warmth and brightness, switches the filter on, applies it, refreshes the popup and the
// tray icon, and schedules a save. FilterPreset::None does nothing.
void ApplyPreset(FilterPreset preset);

// Switches to the other pipeline at the user's request. Neither saves nor refreshes.
void ToggleLegacyMode();
