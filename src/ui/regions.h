// Where the clickable regions of the popup are, in design units, and when they react. The panels draw their
// controls at the same rectangles.
#pragma once

#include "app/state/app_state.h"
#include "app/state/region.h"
#include "win32/platform.h"

// In the order of kPresets (filter/model/warmth.h).
inline constexpr Region kPresetRegions[] = {Region::DayPreset, Region::EveningPreset, Region::NightPreset};

// The rectangle of a region: left and top inclusive, right and bottom exclusive. Empty for Region::None.
RECT RegionRect(Region region);

// The slider that the region belongs to; Slider::None for every other region.
Slider SliderOf(Region region);

// Whether the region belongs to the current panel and reacts now. The banner and the card react only while
// the strip shows them.
bool IsAvailable(Region region);

// The first region of the current panel that is available and contains the point, else Region::None. If the
// banner has been withdrawn and the point is in the strip, logs that once per run.
Region HitTest(int x, int y);
