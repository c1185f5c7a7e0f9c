// The actions of the popup's controls. Mouse input and assistive technology perform them.
#pragma once

#include "app/state/app_state.h"
#include "app/state/region.h"

// Performs the action of a clickable region. A press on a slider does nothing by itself.
void PressRegion(Region region);

// Sets a slider as a drag does: clamps the value, applies the filter and refreshes the popup. Does not save.
void MoveSlider(Slider slider, double value);
