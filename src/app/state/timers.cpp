#include "app/state/timers.h"

#include "app/state/app_state.h"

namespace {

enum class TimerKind { OneShot, Periodic };

struct TimerRow {
    UINT period;      // ms; 0: not a timer of this program
    UINT longPeriod;  // ms
    TimerKind kind;
};

constexpr UINT_PTR IdOf(TimerId timer) {
    return static_cast<UINT_PTR>(timer);
}

// No default: a timer without a row does not compile.
constexpr TimerRow RowOf(TimerId timer) {
    switch (timer) {
        case TimerId::SaveSettings: return {500, 500, TimerKind::OneShot};
        // The long period follows a resume from sleep, after which displays take longer to reconnect. A
        // display change during it restarts the timer with the normal period.
        case TimerId::DisplaySettle: return {300, 1200, TimerKind::OneShot};
        case TimerId::CopiedIndicationEnd: return {5100, 5100, TimerKind::OneShot};
        // The long period applies once a display has refused the lock repeatedly.
        case TimerId::PwmSafePoll: return {2000, 30000, TimerKind::Periodic};
        case TimerId::PwmSafeVerify: return {750, 750, TimerKind::OneShot};
        case TimerId::PopupAutoHide: return {150, 150, TimerKind::Periodic};
        case TimerId::TrayRetry: return {3000, 3000, TimerKind::Periodic};
        case TimerId::GammaFixPoll: return {2000, 2000, TimerKind::Periodic};
    }
    return {0, 0, TimerKind::OneShot};
}

}  // namespace

bool IsTimerId(WPARAM id) {
    return RowOf(static_cast<TimerId>(id)).period != 0;
}

bool IsOneShot(TimerId timer) {
    return RowOf(timer).kind == TimerKind::OneShot;
}

void StartTimer(TimerId timer, TimerPeriod period) {
    if (g_app.mainWindow == nullptr) return;
    const TimerRow row = RowOf(timer);
    const UINT elapse = period == TimerPeriod::Long ? row.longPeriod : row.period;
    if (SetTimer(g_app.mainWindow, IdOf(timer), elapse, nullptr) != 0 || row.kind != TimerKind::OneShot)
        return;
    PostMessageW(g_app.mainWindow, WM_TIMER, IdOf(timer), 0);
}

void StopTimer(TimerId timer) {
    if (g_app.mainWindow == nullptr) return;
    KillTimer(g_app.mainWindow, IdOf(timer));
}

void RestartTimer(TimerId timer, TimerPeriod period) {
    StopTimer(timer);
    StartTimer(timer, period);
}
