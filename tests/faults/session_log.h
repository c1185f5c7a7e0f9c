// The log of a session whose platform fails.
#pragma once

#include <string>

// Writes the log of earlier runs, which is so long that the session trims it.
void WriteOldLog();

// Whether the log still contains the end of the old one.
bool IsOldLogKept();

// The first line of the session's log that claims what cannot have happened if the function failed every
// time, or a crash. Empty if there is none. "Saved settings" is no claim: it is logged in any case.
std::string FindUntrueLine(const char* function);
