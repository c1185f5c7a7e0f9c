// Restores the brightness that the displays had before the lock.
#pragma once

#include <string>
#include <vector>

#include "app/state/app_state.h"

// Enumerates the displays and sets each to its saved value, which is removed from `saved` before the call.
// Afterwards `saved` contains the values that no display has accepted. Returns the names of the displays that
// have accepted theirs. StartPwmSafeRelease may empty `saved` during the call and then restores the remaining
// values itself. Any thread that has initialised COM.
std::vector<std::wstring> RestoreBrightness(SavedBrightness* saved);
