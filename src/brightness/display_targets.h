// The displays whose backlight can be controlled: built-in panels and external monitors.
#pragma once

#include "brightness/display_target.h"

// Fills an empty list: built-in panels first, then external monitors, each in the order of Windows. Blocks
// until the displays have answered.
void EnumerateTargets(DisplayTargetList* list);

// Whether a display reads what the lock sets. Some read back slightly less.
bool IsAt100(const DisplayTarget& target);

// Stores in AppState how many targets there are and how many are at 100 percent, and logs a change of the
// former.
void CountTargets(const DisplayTargetList& list);

// Finds the target by its name and sets it to a percentage; above 100 is treated as 100. False if the display
// is missing or refuses.
bool SetTargetBrightness(const DisplayTarget& target, std::uint32_t percent);
