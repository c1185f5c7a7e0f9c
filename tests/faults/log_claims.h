// What the log must not claim.
#pragma once

#include <string>

// The first line of the session's log that claims what cannot have happened if the function failed every
// time, or a crash. Empty if there is none. "Saved settings" is no claim: it is logged in any case.
std::string FindUntrueLine(const char* function);
