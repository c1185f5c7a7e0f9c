#include "brightness/pwm_safe.h"

#include <utility>

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/timers.h"
#include "brightness/display_targets.h"
#include "store/event_log.h"
#include "store/settings.h"

#include <objbase.h>

namespace {

constexpr int kFailuresToSlowDown = 10;  // reached, not exceeded

// A message that is handled while displays answer may come back here. It must not work on what is being
// changed, and a slow display must not be asked anew by every poll: until the operation is done, others wait
// for their next turn. Only the end, which gives everything back, does not wait.
struct [[nodiscard]] BusyWithDisplays {
    BusyWithDisplays() {
        g_app.pwmBusy = true;
        g_app.pwmModeBefore = g_app.pwmSafe;
    }
    ~BusyWithDisplays() {
        g_app.pwmBusy = false;
        if (g_app.ending || (!g_app.pwmReassertWaiting && !g_app.pwmClickWaiting)) return;
        PostMessageW(g_app.mainWindow, kMessagePwmSafeWaiting, 0, 0);
    }
    BusyWithDisplays(const BusyWithDisplays&) = delete;
    BusyWithDisplays& operator=(const BusyWithDisplays&) = delete;
};

DisplayTargetList LookAtDisplays() {
    DisplayTargetList list;
    EnumerateTargets(&list);
    CountTargets(list);
    return list;
}

bool AllAtFull() {
    return g_app.pwmTargetsPresent && g_app.pwmTargetsAt100 == g_app.pwmTargetCount;
}

TimerPace PollPace() {
    return g_app.pwmRetrySlowed ? TimerPace::Long : TimerPace::Normal;
}

void SwitchOff() {
    g_app.pwmSafe = false;
    g_app.pwmLockConfirmed = false;
    g_app.pwmVerifyPending = false;
    g_app.pwmVerifyIsUserToggle = false;
}

// A value noted before is never replaced: it is the user's own, later ones are the lock's. False when the end
// came while displays answered; the display that was being set then has its value back.
bool LockTargets(const DisplayTargetList& list) {
    for (const DisplayTarget& target : list) {
        const std::uint32_t before =
            g_app.pwmSavedBrightness.try_emplace(target.name, target.percent).first->second;
        SetTargetBrightness(target, kFullPercent);
        if (g_app.ending) {
            SetTargetBrightness(target, before);
            return false;
        }
    }
    return true;
}

void AssertLock(bool byUser) {
    if (g_app.ending) return;
    const DisplayTargetList list = LookAtDisplays();
    if (g_app.ending) return;
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

void RefreshTargets(bool fromTimer) {
    if (g_app.ending) return;
    LookAtDisplays();
    if (g_app.ending || g_app.pwmVerifyPending) return;
    g_app.pwmLockConfirmed = g_app.pwmSafe && AllAtFull();
    if (g_app.pwmSafe && fromTimer && !AllAtFull()) AssertLock(false);
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

void SlowDownWhenHopeless() {
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
    SlowDownWhenHopeless();
}

void TurnOffByUser() {
    StopTimer(TimerId::PwmSafeVerify);
    // Its message may be under way already, and must not arm it again.
    g_app.pwmVerifyPending = false;
    ReleasePwmSafeLock();
    SwitchOff();
    SchedulePwmSafePoll();
    RefreshTargets(false);
}

void JudgeLock() {
    const bool followsUserSwitch = g_app.pwmVerifyIsUserToggle;
    RefreshTargets(false);
    if (g_app.ending) return;
    if (AllAtFull()) {
        ConfirmLock();
        return;
    }
    g_app.pwmVerifyPending = false;
    g_app.pwmVerifyIsUserToggle = false;
    g_app.pwmLockConfirmed = false;
    if (followsUserSwitch) {
        RevertUserSwitch();
    } else {
        CountFailure();
    }
}

DWORD WINAPI ReleaseOnOwnThread(void*) {
    const HRESULT joined = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    ReleasePwmSafeLock();
    if (SUCCEEDED(joined)) CoUninitialize();
    return 0;
}

}  // namespace

void AssertPwmSafeLock(bool byUser) {
    if (g_app.pwmBusy) return;
    const BusyWithDisplays busy;
    AssertLock(byUser);
}

void RefreshPwmSafeTargets(bool fromTimer) {
    if (g_app.pwmBusy) return;
    const BusyWithDisplays busy;
    RefreshTargets(fromTimer);
}

void VerifyPwmLock() {
    StopTimer(TimerId::PwmSafeVerify);
    if (g_app.pwmBusy) {
        if (g_app.pwmVerifyPending && !g_app.ending) StartTimer(TimerId::PwmSafeVerify);
        return;
    }
    const BusyWithDisplays busy;
    JudgeLock();
}

void ReleasePwmSafeLock() {
    if (g_app.pwmSavedBrightness.empty()) return;
    DisplayTargetList list;
    EnumerateTargets(&list);
    for (const DisplayTarget& target : list) {
        const auto saved = g_app.pwmSavedBrightness.find(target.name);
        if (saved == g_app.pwmSavedBrightness.end()) continue;
        const std::uint32_t percent = saved->second;
        SetTargetBrightness(target, percent);
    }
    g_app.pwmSavedBrightness.clear();
}

void SchedulePwmSafePoll() {
    StopTimer(TimerId::PwmSafePoll);
    if (g_app.pwmSafe && !g_app.ending) StartTimer(TimerId::PwmSafePoll, PollPace());
}

void TogglePwmSafeByUser() {
    if (g_app.ending) return;
    if (g_app.pwmBusy) {
        // What is wanted, not that it changes: the operation under way may switch the mode itself.
        g_app.pwmWanted = !g_app.pwmModeBefore;
        g_app.pwmClickWaiting = true;
        return;
    }
    const BusyWithDisplays busy;
    const bool wanted = !g_app.pwmSafe;
    LogEvent("PWM-safe toggled %ls by user", wanted ? L"ON" : L"OFF");
    g_app.pwmRetryCount = 0;
    g_app.pwmRetrySlowed = false;
    if (g_app.pwmSafe) {
        TurnOffByUser();
    } else {
        AssertLock(true);
    }
    // The end gives up the lock under way, and the wish is for the next start.
    if (g_app.ending) g_app.pwmSafe = wanted;
    SaveSettings();
}

void RestorePwmSafeFromSettings() {
    const BusyWithDisplays busy;
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
    if (g_app.ending) return;
    if (g_app.pwmBusy) {
        g_app.pwmReassertWaiting = true;
        return;
    }
    const BusyWithDisplays busy;
    RefreshTargets(false);
    if (!g_app.pwmSafe || g_app.ending) return;
    g_app.pwmRetryCount = 0;
    if (g_app.pwmRetrySlowed) {
        g_app.pwmRetrySlowed = false;
        LogEvent("PWM-safe: display change - retry pace reset");
    }
    AssertLock(false);
}

void PerformWaitingPwmSafeWork() {
    if (g_app.ending || g_app.pwmBusy) return;
    const bool reassert = std::exchange(g_app.pwmReassertWaiting, false);
    const bool clicked = std::exchange(g_app.pwmClickWaiting, false);
    if (reassert) ReassertPwmSafeAfterChange();
    if (clicked && g_app.pwmSafe != g_app.pwmWanted) TogglePwmSafeByUser();
}

void ReleasePwmSafeLockAtSessionEnd() {
    if (g_app.pwmSavedBrightness.empty()) return;
    HANDLE thread = nullptr;
    if (InSendMessageEx(nullptr) != ISMEX_NOSEND)
        thread = CreateThread(nullptr, 0, ReleaseOnOwnThread, nullptr, 0, nullptr);
    if (thread == nullptr) {
        ReleasePwmSafeLock();
        return;
    }
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}
