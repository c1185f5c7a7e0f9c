// The colour that the pipelines and the cursors share. Window thread only.
#pragma once

#include "filter/model/warmth.h"

// What each channel is multiplied by: IntensityToFilterRgb times the brightness.
Rgb FilterColourOf(double intensity, double brightness);

// The same for the current warmth and brightness, computed when either has changed
// since the last call, so that one drag step computes it once.
Rgb CurrentFilterColour();
