// The popup as it is painted, compared with the regions that react to the mouse.
#pragma once

#include "app/state/app_state.h"

// That the thumb is painted where the slider's value and a press of it say.
void RequireThumbPainted(Slider slider);

// That each region that reacts is painted at its place, that the strip's regions are painted only while they
// react, and that no point belongs to two regions.
void RequirePaintedAsHit();
