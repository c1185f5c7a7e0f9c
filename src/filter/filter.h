// Applies and clears the filter through the pipeline in use: the Magnification API or gamma ramps. Modules
// outside this folder load only the identity ramp directly, at start-up, at shutdown and after a crash.
// Window thread only.
#pragma once

#include "filter/model/warmth.h"

// Applies the filter in AppState to the screen, or clears it if it is off or the program is terminating. If
// the Magnification API refuses the matrix, may switch to Legacy Mode (legacy_fallback.h). Has no effect if
// the Magnification API is in use and not initialised.
void ApplyFilter();

// Removes the effect of the pipeline in use from the screen.
void ClearFilter();

// Sets the preset's warmth and brightness, switches the filter on, applies it, refreshes the popup and the
// tray icon, and schedules a save. FilterPreset::None does nothing.
void ApplyPreset(FilterPreset preset);

// Switches to the other pipeline at the user's request and initialises the Magnification API if needed.
// Neither saves nor refreshes.
void ToggleLegacyMode();
