// Every timer of the main window: ids, periods and kinds. Nothing else calls SetTimer or KillTimer.
#pragma once

#include <cstdint>

#include "win32/platform.h"

enum class TimerId : UINT_PTR {
    SaveSettings = 1,
    DisplaySettle = 2,
    CopiedLookEnd = 3,
    PwmSafePoll = 4,
    PwmSafeVerify = 5,
    PopupAutoHide = 6,
    TrayRetry = 7,
    GammaFixPoll = 8,
};

enum class TimerPace { Normal, Long };

// True for an id of the table: others in a WM_TIMER are not ours.
bool IsTimerId(WPARAM id);

// True for a timer whose first WM_TIMER ends it.
bool IsOneShot(TimerId timer);

// Starts the timer with its period; a running one starts anew. TimerPace::Long selects the longer period of
// the two timers that have one. Does nothing without a main window.
void StartTimer(TimerId timer, TimerPace pace = TimerPace::Normal);

// Stops the timer; a stopped one stays stopped.
void StopTimer(TimerId timer);

// Stops the timer and starts it: what is counted is the time since the last call of a burst.
void RestartTimer(TimerId timer, TimerPace pace = TimerPace::Normal);
