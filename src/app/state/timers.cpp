#include "app/state/timers.h"

#include "app/state/app_state.h"

namespace {

enum class TimerKind { OneShot, Periodic };

struct TimerRow {
    TimerId timer;
    UINT period;      // ms
    UINT longPeriod;  // ms
    TimerKind kind;
};

constexpr TimerRow kTimers[] = {
    {TimerId::SaveSettings, 500, 500, TimerKind::OneShot},
    // After a display change; the long pace after a resume from sleep, when displays take longer to come
    // back, unless one of them tells of a change.
    {TimerId::DisplaySettle, 300, 1200, TimerKind::OneShot},
    {TimerId::CopiedLookEnd, 5100, 5100, TimerKind::OneShot},
    // The long pace once a display has refused the lock again and again.
    {TimerId::PwmSafePoll, 2000, 30000, TimerKind::Periodic},
    {TimerId::PwmSafeVerify, 750, 750, TimerKind::OneShot},
    {TimerId::PopupAutoHide, 150, 150, TimerKind::Periodic},
    {TimerId::TrayRetry, 3000, 3000, TimerKind::Periodic},
    {TimerId::GammaFixPoll, 2000, 2000, TimerKind::Periodic},
};

constexpr UINT_PTR IdOf(TimerId timer) {
    return static_cast<UINT_PTR>(timer);
}

const TimerRow& RowOf(TimerId timer) {
    return kTimers[IdOf(timer) - 1];
}

constexpr bool RowsStandInIdOrder() {
    UINT_PTR expected = 1;
    for (const TimerRow& row : kTimers) {
        if (IdOf(row.timer) != expected++) return false;
    }
    return true;
}
static_assert(RowsStandInIdOrder(), "RowOf looks a timer up by its id");

}  // namespace

bool IsTimerId(WPARAM id) {
    return id >= 1 && id <= sizeof(kTimers) / sizeof(kTimers[0]);
}

bool IsOneShot(TimerId timer) {
    return RowOf(timer).kind == TimerKind::OneShot;
}

void StartTimer(TimerId timer, TimerPace pace) {
    if (g_app.mainWindow == nullptr) return;
    const TimerRow& row = RowOf(timer);
    SetTimer(g_app.mainWindow, IdOf(timer), pace == TimerPace::Long ? row.longPeriod : row.period, nullptr);
}

void StopTimer(TimerId timer) {
    if (g_app.mainWindow == nullptr) return;
    KillTimer(g_app.mainWindow, IdOf(timer));
}

void RestartTimer(TimerId timer, TimerPace pace) {
    StopTimer(timer);
    StartTimer(timer, pace);
}
