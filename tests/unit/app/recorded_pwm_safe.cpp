#include "app/recorded_pwm_safe.h"

#include <algorithm>
#include <utility>

#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "brightness/pwm_release.h"
#include "brightness/pwm_safe.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(recorded_pwm_safe);

void (*g_duringDisplayQuery)() = nullptr;
bool g_noThreadForRelease = false;
std::uint64_t g_releaseDuration = 0;
std::uint64_t* g_waitClock = nullptr;
int g_releasesCollected = 0;

namespace {

const char* Moment() {
    return g_app.ending ? " at the end" : "";
}

}  // namespace

AMBREL_REPLACE(void, AssertPwmSafeLock, (bool byUser)) {
    Record("pwm assert", byUser ? " by user" : "");
}
AMBREL_REPLACE(void, RefreshPwmSafeTargets, (bool fromTimer)) {
    Record("pwm refresh", fromTimer ? " from timer" : "");
    // The dispatched message may query the displays itself.
    if (const auto dispatch = std::exchange(g_duringDisplayQuery, nullptr)) dispatch();
}
AMBREL_REPLACE(void, VerifyPwmLock, ()) {
    Record("pwm verify");
}
AMBREL_REPLACE(void, ReleasePwmSafeLock, ()) {
    Record("pwm release", Moment());
}
AMBREL_REPLACE(void, SuspendPwmSafe, ()) {
    StopTimer(TimerId::PwmSafePoll);
    StopTimer(TimerId::PwmSafeVerify);
}
AMBREL_REPLACE(bool, StartPwmSafeRelease, ()) {
    Record("pwm start release", Moment());
    return !g_noThreadForRelease;
}
AMBREL_REPLACE(void, WaitForPwmSafeRelease, (DWORD limit)) {
    Record("pwm wait for release ", limit);
    const std::uint64_t waited = std::min<std::uint64_t>(limit, g_releaseDuration);
    g_releaseDuration -= waited;
    if (g_waitClock != nullptr) *g_waitClock += waited;
}
AMBREL_REPLACE(bool, FinishPwmSafeRelease, ()) {
    g_releasesCollected += 1;
    return true;
}
AMBREL_REPLACE(void, SchedulePwmSafePoll, ()) {
    Record("pwm schedule");
}
AMBREL_REPLACE(void, TogglePwmSafeByUser, ()) {
    Record("pwm toggle");
}
AMBREL_REPLACE(void, RestorePwmSafeFromSettings, ()) {
    Record("pwm restore for ", ValueOf(g_app.mainWindow));
}
AMBREL_REPLACE(void, ReassertPwmSafeAfterChange, ()) {
    Record("pwm reassert");
}
AMBREL_REPLACE(void, PerformDeferredPwmRequest, ()) {
    Record("pwm deferred request");
}
