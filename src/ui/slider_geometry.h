// Where the sliders are, for drawing, hit testing and dragging alike. Design units.
#pragma once

// The travel of a slider in design units: value 0 at the lower end, 1 at the upper. The mouse moves the value
// over the same distance.
constexpr int kSliderBottom = 305;
constexpr int kSliderTravel = 198;
constexpr int kThumbHalfWidth = 26;

constexpr int kWarmthCentreX = 80;
constexpr int kBrightnessCentreX = 240;
