#include "brightness/pwm_safe.h"

#include <utility>

#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "brightness/display_targets.h"
#include "brightness/display_turn.h"
#include "brightness/pwm_release.h"
#include "store/event_log.h"
#include "store/settings.h"

namespace {

constexpr int kFailuresToSlowDown = 10;  // reached, not exceeded

// The displays there are now, counted. False when the window's or the session's end has begun by then:
// nothing may be locked any more.
bool LookAtDisplays(DisplayTargetList* list) {
    if (!g_app.ending) EnumerateTargets(list);
    if (g_app.ending) return false;
    CountTargets(*list);
    return true;
}

bool AllAtFull() {
    return g_app.pwmTargetsPresent && g_app.pwmTargetsAt100 == g_app.pwmTargetCount;
}

TimerPace PollPace() {
    return g_app.pwmRetrySlowed ? TimerPace::Long : TimerPace::Normal;
}

// The lock is neither confirmed nor waiting for its verification.
void ForgetVerification() {
    g_app.pwmLockConfirmed = false;
    g_app.pwmVerifyPending = false;
    g_app.pwmVerifyIsUserToggle = false;
}

void SwitchOff() {
    g_app.pwmSafe = false;
    ForgetVerification();
}

// A saved value is never replaced: it is the user's own, later ones are the lock's. False when the end came
// while a display was being set: its release may have preceded the 100 that was pending, so its value is set
// again. Windows may end the process before that, but then the release, which starts by enumerating the
// displays, was the later of the two in all likelihood.
bool LockTargets(const DisplayTargetList& list) {
    for (const DisplayTarget& target : list) {
        const std::uint32_t before =
            g_app.pwmSavedBrightness.try_emplace(target.name, target.percent).first->second;
        SetTargetBrightness(target, kFullPercent);
        if (g_app.ending) {
            if (!SetTargetBrightness(target, before))
                g_app.pwmSavedBrightness.try_emplace(target.name, before);
            return false;
        }
    }
    return true;
}

void AssertLock(bool byUser) {
    DisplayTargetList list;
    if (!LookAtDisplays(&list)) return;
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
    RestartTimer(TimerId::PwmSafePoll, PollPace());
    RestartTimer(TimerId::PwmSafeVerify);
}

// False as with LookAtDisplays.
bool RefreshTargets(bool fromTimer) {
    DisplayTargetList list;
    if (!LookAtDisplays(&list)) return false;
    if (g_app.pwmVerifyPending) return true;
    g_app.pwmLockConfirmed = g_app.pwmSafe && AllAtFull();
    if (g_app.pwmSafe && fromTimer && !AllAtFull()) AssertLock(false);
    return true;
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

void RevertUserSwitch() {
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
    if (g_app.pwmRetrySlowed || g_app.pwmRetryCount < kFailuresToSlowDown) return;
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
    // A WM_TIMER that is dispatched meanwhile must not start it again.
    g_app.pwmVerifyPending = false;
    ReleasePwmSafeLock();
    SwitchOff();
    SchedulePwmSafePoll();
    RefreshTargets(false);
}

void EvaluateLock() {
    const bool followsUserSwitch = g_app.pwmVerifyIsUserToggle;
    if (!RefreshTargets(false)) return;
    if (AllAtFull()) {
        ConfirmLock();
        return;
    }
    ForgetVerification();
    if (followsUserSwitch) {
        RevertUserSwitch();
    } else {
        CountFailure();
    }
}

}  // namespace

void AssertPwmSafeLock(bool byUser) {
    const DisplayTurn turn;
    if (turn.granted) AssertLock(byUser);
}

void RefreshPwmSafeTargets(bool fromTimer) {
    const DisplayTurn turn;
    if (turn.granted) RefreshTargets(fromTimer);
}

void VerifyPwmLock() {
    StopTimer(TimerId::PwmSafeVerify);
    const DisplayTurn turn;
    if (turn.granted) {
        EvaluateLock();
    } else if (g_app.pwmVerifyPending) {
        StartTimer(TimerId::PwmSafeVerify);
    }
}

void ReleasePwmSafeLock() {
    if (g_app.pwmSavedBrightness.empty()) return;
    RestoreBrightness(&g_app.pwmSavedBrightness);
    g_app.pwmSavedBrightness.clear();
}

void SuspendPwmSafe() {
    StopTimer(TimerId::PwmSafePoll);
    StopTimer(TimerId::PwmSafeVerify);
    ForgetVerification();
    g_app.pwmDeferred = PwmRequest::None;
}

void SchedulePwmSafePoll() {
    StopTimer(TimerId::PwmSafePoll);
    if (g_app.pwmSafe) StartTimer(TimerId::PwmSafePoll, PollPace());
}

void TogglePwmSafeByUser() {
    const bool wanted = !g_app.pwmSafe;
    const DisplayTurn turn(wanted ? PwmRequest::SwitchOn : PwmRequest::SwitchOff);
    if (!turn.granted) return;
    LogEvent("PWM-safe toggled %ls by user", wanted ? L"ON" : L"OFF");
    g_app.pwmRetryCount = 0;
    g_app.pwmRetrySlowed = false;
    if (g_app.pwmSafe) {
        TurnOffByUser();
    } else {
        AssertLock(true);
    }
    // The end abandons the lock under way, but the user's choice is kept for the next start.
    if (g_app.ending) g_app.pwmSafe = wanted;
    SaveSettings();
}

void RestorePwmSafeFromSettings() {
    const DisplayTurn turn;
    if (!turn.granted) return;
    RefreshTargets(false);
    if (!g_app.pwmSafe) {
        SchedulePwmSafePoll();
        return;
    }
    AssertLock(false);
    LogEvent("PWM-safe restored from settings: %d target(s) visible at startup%ls", g_app.pwmTargetCount,
             g_app.pwmTargetCount == 0 ? L" (none yet - will re-probe via poll)" : L"");
}

void ReassertPwmSafeAfterChange() {
    const DisplayTurn turn(PwmRequest::Reassert);
    if (!turn.granted || !RefreshTargets(false) || !g_app.pwmSafe) return;
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
