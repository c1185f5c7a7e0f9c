// PWM-safe mode keeps the backlight of every display at 100%, where it does not flicker. The lock is asserted
// on every display, verified 750 ms later and polled from then on. Each display's brightness before the lock
// is saved, and restored when the mode is switched off or the program ends. Window thread. Functions that
// query displays run as a DisplayOperation; if it cannot start, they do nothing unless stated otherwise.
#pragma once

// Saves the brightness of every display, sets it to 100% and starts the verification. If there is no display,
// the user's switch is reverted immediately; if not `byUser`, the mode stays on and the poll keeps looking
// for a display.
void AssertPwmSafeLock(bool byUser);

// Enumerates the displays again and, unless a verification is pending, updates whether the lock is confirmed.
// `fromTimer` also asserts a lock that no longer holds.
void RefreshPwmSafeTargets(bool fromTimer);

// Timer PwmSafeVerify: evaluates the latest assertion of the lock. A failure after the user's switch reverts
// the switch; other failures are counted, and the tenth in a row slows the poll. If the displays are busy,
// the timer is started again.
void VerifyPwmLock();

// Restores the saved brightness of the connected displays and discards all saved values. Not a
// DisplayOperation: at the end of the program it runs even while another operation waits.
void ReleasePwmSafeLock();

// Stops poll and verification and drops a deferred request, when the window or the session ends.
void SuspendPwmSafe();

// Starts the poll, with the longer period while retries are slowed, if the mode is on; otherwise stops it.
void SchedulePwmSafePoll();

// The user's click: logs it, switches the mode on or off, and saves the settings. If the displays are busy,
// the switch is deferred.
void TogglePwmSafeByUser();

// Creation of the window: enumerates the displays, recalls the brightness that a previous run has not
// restored (saved_brightness.h), and asserts the lock if the settings have the mode on.
void RestorePwmSafeFromSettings();

// After a change of the displays or of power: asserts the lock again and resets the period of the poll. If
// the displays are busy, the re-assertion is deferred.
void ReassertPwmSafeAfterChange();

// Performs the deferred request, if there is one. A switch to the mode that is already set does nothing.
void PerformDeferredPwmRequest();
