// settings.ini, through Windows' private-profile functions: read once at start-up, all keys written on every
// save. Failures are silent: a missing or empty value reads as its default, a non-numeric value as 0.
#pragma once

#include <string>

// The full path of settings.ini in the program's folder under the roaming application data. Creates that
// folder when it is missing. Empty when Windows reports no application-data folder.
std::wstring GetSettingsPath();

// Stores the path, reads settings.ini into AppState, clamps values that are out of range and turns the filter
// off. Without a path every setting keeps its default and nothing is logged.
void LoadSettings();

// Writes every key from AppState. Does nothing without a path.
void SaveSettings();
