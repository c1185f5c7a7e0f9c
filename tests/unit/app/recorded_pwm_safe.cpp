// Takes the PWM-safe controller's place in a test program: a line "pwm ..." in the record for each call.
#include "app/app_state.h"
#include "brightness/pwm_safe.h"
#include "support/call_record.h"

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
}
void VerifyPwmLock() {
    Record("pwm verify");
}
void ReleasePwmSafeLock() {
    Record("pwm release", Moment());
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
