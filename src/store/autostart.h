// Launch at start-up: a value in the current user's Run key, which the shell reads at sign-in. Registry
// failures are silent. Window thread only.
#pragma once

#include <string>

// The value's text; empty if the value is missing, is not text or cannot be read.
std::wstring ReadAutostartValue();

// Writes the path of this program, unquoted, or deletes the value. A path of more than 259 characters is not
// written. launchAtStart follows the request even if the registry call fails.
void SetAutostart(bool on);

// Synchronises the setting and the registry at start-up. An existing value switches the setting on and is
// rewritten with the path of the running program; a missing value is restored if the setting is on. Does not
// save the setting.
void RepairAutostartEntry();
