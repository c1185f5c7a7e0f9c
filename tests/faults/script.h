// A session of the program with input of the user and messages of Windows: every region, the menu, the
// timers, display changes, sleep, displays that are switched off and on, the report, what Windows refuses now
// and then, and one of two ends.
#pragma once

#include <vector>

// SecondStart: another instance is running. Helper: the elevated run that extends the gamma range. Neither
// has a window.
enum class End { Quit, EndOfSession, SecondStart, Helper };
const char* NameOf(End end);

// The short form omits most regions, the second display and the repair of the gamma range.
std::vector<void (*)()> SessionScript(End end, bool shortForm);

// The number of regions of both panels that the latest session has not pressed while they were available in
// the visible popup.
int CountUnpressedRegions();

// Whether filter and lock were in force again after every loss of power in the latest session.
bool WasReassertedAfterPowerLoss();
