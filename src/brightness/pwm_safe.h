// PWM-safe mode: the displays' own backlight held at 100%, so that it never flickers. A lock is asserted on
// every display, verified 750 ms later and polled from then on; what a display was set to before is given
// back at the end. While displays answer, messages may be dispatched: what one of them asks of this unit
// waits for its next turn, save the release, which is the end's. Window thread only; the release also on the
// thread that it waits for at the session's end.
#pragma once

// Sets every display to 100%, noting first what it was set to, and has the lock verified. With no display a
// switch by the user is undone at once; otherwise the mode stays on and the poll keeps looking for one. Does
// nothing at the program's end, or while another operation waits for displays.
void AssertPwmSafeLock(bool byUser);

// Looks at the displays anew and, unless a verification is pending, at whether the lock holds; from the poll
// it also asserts a lock that has slipped.
void RefreshPwmSafeTargets(bool fromTimer);

// Timer: judges the lock asserted last. A failure after the user's own switch undoes the switch; other
// failures are counted, and the tenth slows the poll.
void VerifyPwmLock();

// Gives back what the displays present now were set to before the lock, and forgets it.
void ReleasePwmSafeLock();

// The same from WM_ENDSESSION, which another process sends: COM does not call out of such a message
// (RPC_E_CANTCALLOUT_ININPUTSYNCCALL), so the lock is released on a thread that this one waits for.
void ReleasePwmSafeLockAtSessionEnd();

// Starts the poll at its pace when the mode is on, else stops it.
void SchedulePwmSafePoll();

// The user's switch: logs, turns the mode on or off, and saves.
void TogglePwmSafeByUser();

// At the window's creation: the lock of the last run, when the settings say so.
void RestorePwmSafeFromSettings();

// What was asked for while displays answered: an assertion after a change, and the last click on the card.
void PerformWaitingPwmSafeWork();

// After displays or power have changed: the lock is asserted anew at the normal pace.
void ReassertPwmSafeAfterChange();

// The status text of the PWM-safe card, from AppState alone.
const wchar_t* PwmCardLabel();
