// The displays whose backlight can be controlled: built-in panels and external monitors.
#pragma once

#include "brightness/display_target.h"

// Fills an empty list: built-in panels first, then external monitors, each in the order of Windows. Blocks
// until the displays have answered.
void EnumerateTargets(DisplayTargetList* list);

// Whether the display is at 100 percent. 99 counts, since some displays report slightly less.
bool IsAt100(const DisplayTarget& target);

// Stores in AppState how many targets there are, how many are at 100 percent and whether all are built-in
// panels, and logs a change of the number of targets.
void CountTargets(const DisplayTargetList& list);

// Finds the target by its name and sets it to a percentage; above 100 is treated as 100. False if the display
// is missing or refuses.
bool SetTargetBrightness(const DisplayTarget& target, std::uint32_t percent);
