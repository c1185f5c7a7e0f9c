// The one door to the screen's colour: every part of the program applies and clears the filter here,
// whichever pipeline is in use. Window thread only.
#pragma once

#include "filter/model/warmth.h"

// Puts the filter on the screen as AppState says, or takes it off when it is off or the program is ending. A
// second error 87 in a row from the Magnification API switches to Legacy Mode, unless the user has left that
// by hand in this run; any other error, and then 87 too, is shown once a run. Never initialises a pipeline:
// without one it has no effect.
void ApplyFilter();

// Takes the effect of the pipeline in use off the screen.
void ClearFilter();

// Sets the preset's warmth and brightness, turns the filter on, applies and shows it, and has it saved soon.
// FilterPreset::None does nothing.
void ApplyPreset(FilterPreset preset);

// The user's switch between the two pipelines. Neither saves nor refreshes.
void ToggleLegacyMode();
