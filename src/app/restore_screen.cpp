#include "app/restore_screen.h"

#include <algorithm>

#include "brightness/pwm_release.h"
#include "filter/cursor_tint.h"
#include "filter/legacy_gamma.h"

namespace {

constexpr DWORD kScreenDelay = 1000;  // ms; displays that answer within it are restored before the screen

}  // namespace

void RestoreScreen(DWORD timeoutMs) {
    const ULONGLONG start = GetTickCount64();
    WaitForPwmSafeRelease(std::min(timeoutMs, kScreenDelay));
    ReleaseCursorCopies();
    RestoreIdentityRamp();
    const ULONGLONG spent = GetTickCount64() - start;
    if (spent < timeoutMs) WaitForPwmSafeRelease(static_cast<DWORD>(timeoutMs - spent));
}
