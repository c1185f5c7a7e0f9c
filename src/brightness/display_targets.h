// The displays whose backlight can be driven, of both kinds.
#pragma once

#include "brightness/display_target.h"

// Fills an empty list: built-in panels first, then external monitors, each in Windows' order. Takes as long
// as the displays take to answer.
void EnumerateTargets(DisplayTargetList* list);

// Stores the counts of a list in AppState and logs a change of their number.
void CountTargets(const DisplayTargetList& list);

// Sets a target, found again by its name, to a percentage; above 100 counts as 100. True when it was
// accepted.
bool SetTargetBrightness(const DisplayTarget& target, std::uint32_t percent);
