// The user's choices in settings.ini: read once at start-up, rewritten whole at each change, through Windows'
// private-profile functions. Failures are silent: a missing or empty value reads as its default,
// one that is no number as 0.
#pragma once

#include <string>

// The full path of settings.ini in the roaming application-data folder, whose own folder is created when it
// is missing. Empty when Windows does not tell where application data lies.
std::wstring GetSettingsPath();

// Finds settings.ini, reads it into AppState, clamps what is out of range and turns the filter off. Without a
// path every setting keeps its default and nothing is logged.
void LoadSettings();

// Writes every key from AppState. Does nothing without a path.
void SaveSettings();
