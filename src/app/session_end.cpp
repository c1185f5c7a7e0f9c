#include "app/session_end.h"

#include "app/restore_screen.h"
#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "app/window_lifetime.h"
#include "brightness/pwm_release.h"
#include "brightness/pwm_safe.h"

namespace {

// All in ms.
constexpr DWORD kSessionTimeout = 4000;     // Windows terminates the process after 5 s
constexpr DWORD kInstallerTimeout = 25000;  // an installer terminates the process after 30 s

bool IsInstallerRequest(LPARAM reason) {
    return (reason & ENDSESSION_CLOSEAPP) != 0;
}

}  // namespace

void OnEndSession(bool ending, LPARAM reason) {
    if (!ending) return;
    // The process keeps running for a moment. No poll, display change or slider drag may undo the restoration
    // in that time.
    g_app.ending = true;
    // Drops the queued actions: performed later, they would continue the session.
    g_app.accessibleActions.count = 0;
    StopTimer(TimerId::DisplaySettle);
    SuspendPwmSafe();
    const bool started = StartPwmSafeRelease();
    RestoreScreen(IsInstallerRequest(reason) ? kInstallerTimeout : kSessionTimeout);
    if (!started) ReleasePwmSafeLock();
    // The session continues: the installer replaces the program's file and waits for the program to exit.
    if (IsInstallerRequest(reason) && !g_app.windowDestroyed) DestroyMainWindow();
}

void ContinueSession() {
    // A running operation on the displays must still find `ending` set and abort.
    if (!g_app.ending || g_app.windowDestroyed || g_app.pwmOperationRunning) return;
    g_app.ending = false;
    RestartTimer(TimerId::DisplaySettle);
}
