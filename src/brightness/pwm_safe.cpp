#include "brightness/pwm_safe.h"

#include <utility>

#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "brightness/display_operation.h"
#include "brightness/display_targets.h"
#include "brightness/restore_brightness.h"
#include "brightness/saved_brightness.h"
#include "store/event_log.h"
#include "store/settings.h"

namespace {

constexpr int kSlowdownThreshold = 10;  // failed verifications in a row

// Enumerates the displays and stores their counts in AppState. False if the window or the session is ending
// by then: no display may be locked any more.
bool EnumerateAndCountTargets(DisplayTargetList* list) {
    if (!g_app.ending) EnumerateTargets(list);
    if (g_app.ending) return false;
    CountTargets(*list);
    return true;
}

bool AllAt100() {
    return g_app.pwmTargetsPresent && g_app.pwmTargetsAt100 == g_app.pwmTargetCount;
}

TimerPeriod PollPeriod() {
    return g_app.pwmRetrySlowed ? TimerPeriod::Long : TimerPeriod::Normal;
}

void ClearVerification() {
    g_app.pwmLockConfirmed = false;
    g_app.pwmVerifyPending = false;
    g_app.pwmVerifyIsUserToggle = false;
}

void SwitchOff() {
    g_app.pwmSafe = false;
    ClearVerification();
}

// Saves the brightness of each display, unless it is saved already: later values are the lock's. False if the
// session ends while a display is being set. The release may have restored that display before it accepted
// the 100 percent, so its value is then restored again. If that fails, the value stays saved.
bool LockTargets(const DisplayTargetList& list) {
    for (const DisplayTarget& target : list) {
        const std::uint32_t before = SaveBrightness(target);
        SetTargetBrightness(target, kMaxPercent);
        if (g_app.ending) {
            if (SetTargetBrightness(target, before)) {
                DeleteRecordedBrightness({target.name});
            } else {
                g_app.pwmSavedBrightness.try_emplace(target.name, before);
            }
            return false;
        }
    }
    return true;
}

void AssertLock(bool byUser) {
    DisplayTargetList list;
    if (!EnumerateAndCountTargets(&list)) return;
    if (list.empty()) {
        if (byUser) {
            SwitchOff();
            g_app.pwmSavedBrightness.clear();
        }
        SchedulePwmSafePoll();
        return;
    }
    if (!LockTargets(list)) return;
    g_app.pwmSafe = true;
    g_app.pwmLockConfirmed = false;
    g_app.pwmVerifyPending = true;
    if (byUser) g_app.pwmVerifyIsUserToggle = true;
    RestartTimer(TimerId::PwmSafePoll, PollPeriod());
    RestartTimer(TimerId::PwmSafeVerify);
}

// RefreshPwmSafeTargets within an operation. False if the window or the session is ending.
bool RefreshTargets(bool fromTimer) {
    DisplayTargetList list;
    if (!EnumerateAndCountTargets(&list)) return false;
    if (g_app.pwmVerifyPending) return true;
    g_app.pwmLockConfirmed = g_app.pwmSafe && AllAt100();
    if (g_app.pwmSafe && fromTimer && !AllAt100()) AssertLock(false);
    return true;
}

// The first enumeration after the start. Brightness that the last run has not restored is saved again, and
// with the mode off it is restored immediately.
void RecallFromLastRun() {
    DisplayTargetList list;
    if (!EnumerateAndCountTargets(&list)) return;
    RecallBrightness(list);
    g_app.pwmLockConfirmed = g_app.pwmSafe && AllAt100();
    if (g_app.pwmSafe || g_app.pwmSavedBrightness.empty()) return;
    ReleasePwmSafeLock();
    RefreshTargets(false);
}

void ConfirmLock() {
    g_app.pwmVerifyPending = false;
    g_app.pwmVerifyIsUserToggle = false;
    g_app.pwmLockConfirmed = g_app.pwmSafe;
    if (!g_app.pwmSafe) return;
    g_app.pwmPendingLogged = false;
    g_app.pwmRetryCount = 0;
    if (g_app.pwmRetrySlowed) {
        g_app.pwmRetrySlowed = false;
        LogEvent("PWM-safe: lock recovered - normal polling resumed");
        SchedulePwmSafePoll();
    }
    LogEvent("PWM-safe: %d display(s) confirmed locked at 100%%", g_app.pwmTargetCount);
}

void RevertUserToggle() {
    LogEvent("PWM-safe: 100%% lock not confirmed (%d of %d) - reverting toggle", g_app.pwmTargetsAt100,
             g_app.pwmTargetCount);
    g_app.pwmPendingLogged = false;
    ReleasePwmSafeLock();
    g_app.pwmSafe = false;
    SaveSettings();
    SchedulePwmSafePoll();
    RefreshTargets(false);
}

void SlowDownRetries() {
    if (!g_app.pwmTargetsPresent) return;
    g_app.pwmRetryCount += 1;
    if (g_app.pwmRetrySlowed || g_app.pwmRetryCount < kSlowdownThreshold) return;
    g_app.pwmRetrySlowed = true;
    LogEvent("PWM-safe: display will not hold 100%% after %d attempts - slowing retries to 30s",
             g_app.pwmRetryCount);
    SchedulePwmSafePoll();
}

void CountFailure() {
    if (!g_app.pwmPendingLogged) {
        g_app.pwmPendingLogged = true;
        LogEvent("PWM-safe: lock pending (%d of %d at 100%%) - poll will re-assert", g_app.pwmTargetsAt100,
                 g_app.pwmTargetCount);
    }
    SlowDownRetries();
}

void TurnOffByUser() {
    StopTimer(TimerId::PwmSafeVerify);
    // A WM_TIMER that COM dispatches during the release must not restart the timer.
    g_app.pwmVerifyPending = false;
    ReleasePwmSafeLock();
    SwitchOff();
    SchedulePwmSafePoll();
    RefreshTargets(false);
}

void EvaluateLock() {
    const bool followsUserSwitch = g_app.pwmVerifyIsUserToggle;
    if (!RefreshTargets(false)) return;
    if (AllAt100()) {
        ConfirmLock();
        return;
    }
    ClearVerification();
    if (followsUserSwitch) {
        RevertUserToggle();
    } else {
        CountFailure();
    }
}

}  // namespace

void AssertPwmSafeLock(bool byUser) {
    const DisplayOperation operation;
    if (operation.started) AssertLock(byUser);
}

void RefreshPwmSafeTargets(bool fromTimer) {
    const DisplayOperation operation;
    if (operation.started) RefreshTargets(fromTimer);
}

void VerifyPwmLock() {
    StopTimer(TimerId::PwmSafeVerify);
    const DisplayOperation operation;
    if (operation.started) {
        EvaluateLock();
    } else if (g_app.pwmVerifyPending) {
        StartTimer(TimerId::PwmSafeVerify);
    }
}

void ReleasePwmSafeLock() {
    if (g_app.pwmSavedBrightness.empty()) return;
    DeleteRecordedBrightness(RestoreBrightness(&g_app.pwmSavedBrightness));
    g_app.pwmSavedBrightness.clear();
}

void SuspendPwmSafe() {
    StopTimer(TimerId::PwmSafePoll);
    StopTimer(TimerId::PwmSafeVerify);
    ClearVerification();
    g_app.pwmDeferred = PwmRequest::None;
}

void SchedulePwmSafePoll() {
    StopTimer(TimerId::PwmSafePoll);
    if (g_app.pwmSafe) StartTimer(TimerId::PwmSafePoll, PollPeriod());
}

void TogglePwmSafeByUser() {
    const bool newMode = !g_app.pwmSafe;
    const DisplayOperation operation(newMode ? PwmRequest::SwitchOn : PwmRequest::SwitchOff);
    if (!operation.started) return;
    LogEvent("PWM-safe toggled %ls by user", newMode ? L"ON" : L"OFF");
    g_app.pwmRetryCount = 0;
    g_app.pwmRetrySlowed = false;
    if (g_app.pwmSafe) {
        TurnOffByUser();
    } else {
        AssertLock(true);
    }
    // The end of the session aborts the operation, but the user's choice is saved for the next start.
    if (g_app.ending) g_app.pwmSafe = newMode;
    SaveSettings();
}

void RestorePwmSafeFromSettings() {
    const DisplayOperation operation;
    if (!operation.started) return;
    RecallFromLastRun();
    if (!g_app.pwmSafe) {
        SchedulePwmSafePoll();
        return;
    }
    AssertLock(false);
    LogEvent("PWM-safe restored from settings: %d target(s) visible at startup%ls", g_app.pwmTargetCount,
             g_app.pwmTargetCount == 0 ? L" (none yet - will re-probe via poll)" : L"");
}

void ReassertPwmSafeAfterChange() {
    const DisplayOperation operation(PwmRequest::Reassert);
    if (!operation.started || !RefreshTargets(false) || !g_app.pwmSafe) return;
    g_app.pwmRetryCount = 0;
    if (g_app.pwmRetrySlowed) {
        g_app.pwmRetrySlowed = false;
        LogEvent("PWM-safe: display change - retry pace reset");
    }
    AssertLock(false);
}

void PerformDeferredPwmRequest() {
    const PwmRequest request = std::exchange(g_app.pwmDeferred, PwmRequest::None);
    switch (request) {
        case PwmRequest::None: return;
        case PwmRequest::Reassert: ReassertPwmSafeAfterChange(); return;
        case PwmRequest::SwitchOn:
            if (!g_app.pwmSafe) TogglePwmSafeByUser();
            return;
        case PwmRequest::SwitchOff:
            if (g_app.pwmSafe) TogglePwmSafeByUser();
            return;
    }
}
