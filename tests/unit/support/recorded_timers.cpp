// Replaces Windows' timers in a test program. Records "set timer ID PERIOD" and "kill timer ID".
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(recorded_timers);

namespace {

UINT_PTR WINAPI FakeSetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
    EXPECT_EQ(window, g_app.mainWindow);
    EXPECT_EQ(procedure, nullptr);
    Record("set timer ", id, " ", period);
    return id;
}

BOOL WINAPI FakeKillTimer(HWND window, UINT_PTR id) {
    EXPECT_EQ(window, g_app.mainWindow);
    Record("kill timer ", id);
    return TRUE;
}

}  // namespace

AMBREL_SEAM(SetTimer, FakeSetTimer);
AMBREL_SEAM(KillTimer, FakeKillTimer);
