#include "ui/pwm_card_label.h"

#include "app/state/app_state.h"

namespace {

const wchar_t* LabelWhileOn() {
    if (!g_app.pwmTargetsPresent) return L"WAITING FOR DISPLAY";
    if (g_app.pwmVerifyPending) return L"VERIFYING 100% LOCK";
    if (!g_app.pwmLockConfirmed) {
        return g_app.pwmRetrySlowed ? L"DISPLAY WON'T HOLD 100%" : L"REASSERTING 100% LOCK";
    }
    return g_app.pwmBuiltInOnly ? L"BUILT-IN PANEL LOCKED AT 100%" : L"DISPLAY LOCKED AT 100%";
}

const wchar_t* LabelWhileOff() {
    // Includes 0 of 0: no display at all.
    if (g_app.pwmTargetsAt100 >= g_app.pwmTargetCount) return L"DISPLAY ALREADY AT 100%";
    return g_app.pwmBuiltInOnly ? L"LOCK BUILT-IN PANEL AT 100%" : L"LOCK DISPLAY AT 100%";
}

}  // namespace

const wchar_t* PwmCardLabel() {
    return g_app.pwmSafe ? LabelWhileOn() : LabelWhileOff();
}
