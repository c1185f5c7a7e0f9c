// The brightness of each display before its first lock: in AppState for this run, and in settings.ini for the
// next start in case this run is killed. The record changes only when a display is locked for the first time
// or restored. Window thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "brightness/display_target.h"

// Saves the target's brightness, unless it is already saved, and returns the saved value. On return the
// record is on the disk, so the display may be set. If a previous run has locked the display and not restored
// it, the value of that run is saved.
std::uint32_t SaveBrightness(const DisplayTarget& target);

// Called with the first enumeration after the start. Saves the recorded values of displays that a previous
// run has not restored. A value is used only if the target and the monitor are the same and the display still
// reads the lock's 100 percent; otherwise it is deleted. The value of a display that is not connected, or
// that reads 100 percent and whose monitor Windows does not identify, is kept for 30 days.
void RecallBrightness(const DisplayTargetList& list);

// Deletes the values of these targets, which have been restored, from the record. A value that this run has
// not recalled stays.
void DeleteRecordedBrightness(const std::vector<std::wstring>& names);
