// Launch at start-up: a value in the current user's Run key, which the shell reads at sign-in. Registry
// failures are silent. Window thread only.
#pragma once

#include <string>

// The value's text; empty when it is missing, no text, or cannot be read.
std::wstring ReadAutostartValue();

// Writes the path of this program, as it is, without quotes, or deletes the value. A path of more than 259
// characters is not written. launchAtStart follows the request even when the registry call fails.
void SetAutostart(bool on);

// Brings setting and registry together at start-up: a value that exists turns the setting on and is rewritten
// for the program as it runs now; a missing one is restored when the setting is on. Does not save the
// setting.
void RepairAutostartEntry();
