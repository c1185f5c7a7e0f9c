// The brightness of each display before its first lock: in AppState for this run, and in settings.ini for the
// next start in case this run is killed. The record changes only when a display is locked for the first time
// or restored. Window thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "brightness/display_target.h"

// Saves the target's brightness, unless it is already saved, and returns the saved value. On return the
// record is on the disk, so the display may be set. A display that a previous run has locked and not restored
// keeps the value of that run.
std::uint32_t SaveBrightness(const DisplayTarget& target);

// At the first enumeration after the start: saves the values of displays that the last run has not restored.
// A value is used only if both the target and the monitor are the same and the display still reads what the
// lock sets. If one of these differs, the value is dropped. That of a display that is away is kept for 30
// days.
void RecallBrightness(const DisplayTargetList& list);

// These targets have their own brightness again: deletes their values from the record.
void DeleteRecordedBrightness(const std::vector<std::wstring>& names);
