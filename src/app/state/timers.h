// Every timer of the main window: ids, periods and kinds. No other file calls SetTimer or KillTimer.
#pragma once

#include <cstdint>

#include "win32/platform.h"

enum class TimerId : UINT_PTR {
    SaveSettings = 1,
    DisplaySettle = 2,
    CopiedIndicationEnd = 3,
    PwmSafePoll = 4,
    PwmSafeVerify = 5,
    PopupAutoHide = 6,
    TrayRetry = 7,
    GammaFixPoll = 8,
};

enum class TimerPeriod { Normal, Long };

// Whether the id is one of the above. Other WM_TIMER ids are ignored.
bool IsTimerId(WPARAM id);

// Whether the first WM_TIMER stops the timer.
bool IsOneShot(TimerId timer);

// Starts the timer with its period, or restarts a running one. TimerPeriod::Long selects the longer period of
// the two timers that have one. If Windows refuses a one-shot timer, its message is posted immediately, so
// that its action is not lost. Does nothing without a main window.
void StartTimer(TimerId timer, TimerPeriod period = TimerPeriod::Normal);

// Stops the timer. Does nothing if it is not running.
void StopTimer(TimerId timer);

// Stops the timer, then starts it. Debounces: the period restarts with each call, even if Windows refuses the
// new timer.
void RestartTimer(TimerId timer, TimerPeriod period = TimerPeriod::Normal);
