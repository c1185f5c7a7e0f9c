#include "app/session_end.h"

#include <algorithm>

#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "brightness/pwm_release.h"
#include "brightness/pwm_safe.h"
#include "filter/cursor_tint.h"
#include "filter/legacy_gamma.h"

namespace {

// All in ms.
constexpr DWORD kScreenDelay = 1000;  // displays that answer in it are restored before the screen
constexpr DWORD kSessionLimit = 4000;
constexpr DWORD kInstallerLimit = 25000;  // an installer forces the program's end after 30 s

bool IsInstallersRequest(LPARAM reason) {
    return (reason & ENDSESSION_CLOSEAPP) != 0;
}

}  // namespace

void OnEndSession(bool ending, LPARAM reason) {
    if (!ending) return;
    // The process lives on for a moment, and nothing that happens in it may undo what is restored now: no
    // poll, no display change, no slider still held.
    g_app.ending = true;
    StopTimer(TimerId::DisplaySettle);
    SuspendPwmSafe();
    const bool started = StartPwmSafeRelease();
    RestoreScreen(IsInstallersRequest(reason) ? kInstallerLimit : kSessionLimit);
    if (!started) ReleasePwmSafeLock();
    // An installer that needs the program's file lets the session go on and waits for the program to end.
    if (IsInstallersRequest(reason) && !g_app.windowDestroyed) DestroyWindow(g_app.mainWindow);
}

void ContinueSession() {
    // An operation on the displays that is still under way has yet to see the end.
    if (!g_app.ending || g_app.windowDestroyed || g_app.pwmBusy) return;
    g_app.ending = false;
    RestartTimer(TimerId::DisplaySettle);
}

void RestoreScreen(DWORD limit) {
    const ULONGLONG start = GetTickCount64();
    WaitForPwmSafeRelease(std::min(limit, kScreenDelay));
    ReleaseCursorCopies();
    RestoreIdentityRamp();
    const ULONGLONG spent = GetTickCount64() - start;
    if (spent < limit) WaitForPwmSafeRelease(static_cast<DWORD>(limit - spent));
}
