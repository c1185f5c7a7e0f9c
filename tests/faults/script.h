// A session of the program with input of the user and messages of Windows: every region, the menu, the
// timers, display changes, resume, the report, and one of two ends.
#pragma once

#include <vector>

// Helper: the elevated run that extends the gamma range, which has no window.
enum class End { Quit, EndOfSession, Helper };
const char* NameOf(End end);

// The short form omits most regions.
std::vector<void (*)()> SessionScript(End end, bool shortForm);
