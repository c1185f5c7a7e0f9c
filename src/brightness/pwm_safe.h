// PWM-safe mode: the displays' own backlight is held at 100% so that it never flickers. The lock is asserted
// on every display, verified 750 ms later and polled from then on; each display's brightness before the lock
// is saved and restored when the mode or the program ends. Window thread only. Operations that query displays
// take a turn (display_turn.h); without one they do nothing or are deferred.
#pragma once

// Sets every display to 100%, saves its brightness first, and starts the verification. With no display a
// switch by the user is undone at once; otherwise the mode stays on and the poll keeps looking for one.
void AssertPwmSafeLock(bool byUser);

// Looks at the displays anew and, unless a verification is pending, at whether the lock holds. From the poll
// it also asserts a lock that has slipped.
void RefreshPwmSafeTargets(bool fromTimer);

// Timer: evaluates the lock asserted last. A failure after the user's own switch undoes the switch; other
// failures are counted, and the tenth slows the poll. Without a turn the timer starts again.
void VerifyPwmLock();

// Restores the saved brightness of the displays present now and forgets all of it. Takes no turn: the
// program's end does not wait for another operation.
void ReleasePwmSafeLock();

// The window's or the session's end has begun: stops poll and verification and drops a deferred request.
void SuspendPwmSafe();

// Starts the poll at its pace when the mode is on, else stops it.
void SchedulePwmSafePoll();

// The user's switch: logs, turns the mode on or off, and saves. Without a turn, the switch away from
// the present mode is deferred.
void TogglePwmSafeByUser();

// At the window's creation: the lock of the last run, when the settings say so.
void RestorePwmSafeFromSettings();

// After displays or power have changed: the lock is asserted anew at the normal pace. Deferred without a
// turn.
void ReassertPwmSafeAfterChange();

// Performs the deferred request, if there is one. A switch to a mode that is on by now does nothing.
void PerformDeferredPwmRequest();

// The status text of the PWM-safe card, from AppState alone.
const wchar_t* PwmCardLabel();
