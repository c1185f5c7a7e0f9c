// Slider geometry in design units, shared by drawing, hit testing and dragging.
#pragma once

// The thumb travels kSliderTravel units up from kSliderBottom (value 0) to value 1. A drag over the same
// distance changes the value from 0 to 1.
constexpr int kSliderBottom = 305;
constexpr int kSliderTravel = 198;
constexpr int kThumbHalfWidth = 26;

constexpr int kWarmthCentreX = 80;
constexpr int kBrightnessCentreX = 240;
