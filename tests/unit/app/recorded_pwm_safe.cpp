#include "app/recorded_pwm_safe.h"

#include <utility>

#include "app/state/app_state.h"
#include "brightness/pwm_safe.h"
#include "support/call_record.h"

void (*g_whileDisplaysAnswer)() = nullptr;

namespace {

const char* Moment() {
    return g_app.ending ? " at the end" : "";
}

}  // namespace

void AssertPwmSafeLock(bool byUser) {
    Record("pwm assert", byUser ? " by user" : "");
}
void RefreshPwmSafeTargets(bool fromTimer) {
    Record("pwm refresh", fromTimer ? " from timer" : "");
    // What is dispatched may look at the displays in its turn.
    if (const auto dispatch = std::exchange(g_whileDisplaysAnswer, nullptr)) dispatch();
}
void VerifyPwmLock() {
    Record("pwm verify");
}
void ReleasePwmSafeLock() {
    Record("pwm release", Moment());
}
void ReleasePwmSafeLockAtSessionEnd() {
    Record("pwm release for the session", Moment());
}
void SchedulePwmSafePoll() {
    Record("pwm schedule");
}
void TogglePwmSafeByUser() {
    Record("pwm toggle");
}
void RestorePwmSafeFromSettings() {
    Record("pwm restore for ", ValueOf(g_app.mainWindow));
}
void ReassertPwmSafeAfterChange() {
    Record("pwm reassert");
}
void PerformWaitingPwmSafeWork() {
    Record("pwm waiting work");
}
