// The colour that both pipelines and the cursors share. Window thread only.
#pragma once

#include "filter/model/warmth.h"

// The factor of each channel, 0..1: IntensityToFilterRgb times the brightness.
Rgb FilterColourOf(double intensity, double brightness);

// FilterColourOf the current warmth and brightness. Cached until either changes, so that a drag step computes
// it only once.
Rgb CurrentFilterColour();
