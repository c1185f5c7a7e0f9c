#include "ui/click_fixture.h"

#include "app/shell/refresh.h"
#include "brightness/pwm_safe.h"
#include "filter/cursor_tint.h"
#include "filter/gamma_fix.h"
#include "filter/legacy_gamma.h"
#include "filter/magnification.h"
#include "store/autostart.h"
#include "store/event_log.h"
#include "store/settings.h"
#include "support/seam.h"
#include "ui/support_copy.h"

AMBREL_SEAM_SET(click_fixture);

ClickFixture g_fixture;

namespace {

HWND const kWindow = MakeHandle<HWND>(0x1234);

UINT_PTR WINAPI FakeSetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC) {
    EXPECT_EQ(window, kWindow);
    Record("set ", id, " ", period);
    return id;
}

BOOL WINAPI FakeKillTimer(HWND, UINT_PTR id) {
    Record("kill ", id);
    return TRUE;
}

HWND WINAPI FakeSetCapture(HWND) {
    Record("capture");
    return nullptr;
}

}  // namespace

AMBREL_SEAM(SetTimer, FakeSetTimer);
AMBREL_SEAM(KillTimer, FakeKillTimer);
AMBREL_SEAM(SetCapture, FakeSetCapture);

AMBREL_REPLACE(void, InitMagnification, ()) {
    Record("initialise");
    g_app.magnificationReady = g_fixture.initialisationSucceeds;
}
AMBREL_REPLACE(void, ShutdownMagnification, ()) {
    Record("shut down");
}
AMBREL_REPLACE(bool, IsMagnificationUsable, ()) {
    return g_app.magnificationReady;
}
AMBREL_REPLACE(MatrixResult, SetFilterMatrix, ()) {
    Record("matrix");
    g_fixture.atApply = Now();
    return {true, 0};
}
AMBREL_REPLACE(bool, SetIdentityMatrix, ()) {
    Record("identity matrix");
    g_fixture.atClear = Now();
    return true;
}
AMBREL_REPLACE(void, ApplyLegacyRamp, ()) {
    Record("ramp");
    g_fixture.atApply = Now();
}
AMBREL_REPLACE(void, RestoreIdentityRamp, ()) {
    Record("identity ramp");
    g_fixture.atClear = Now();
}
AMBREL_REPLACE(void, TintSystemCursors, ()) {
    Record("tint cursors");
}
AMBREL_REPLACE(void, RestoreSystemCursors, ()) {
    Record("restore cursors");
}
AMBREL_REPLACE(void, StartGammaRangeFix, ()) {
    Record("gamma fix");
}
AMBREL_REPLACE(void, TogglePwmSafeByUser, ()) {
    Record("toggle");
}
AMBREL_REPLACE(void, RefreshPwmSafeTargets, (bool fromTimer)) {
    Record(fromTimer ? "look at displays from timer" : "look at displays");
}
AMBREL_REPLACE(void, CopySupportBundle, ()) {
    Record("copy support bundle");
}
AMBREL_REPLACE(void, SetAutostart, (bool on)) {
    Record("autostart ", on ? "on" : "off");
    g_app.launchAtStart = on;
}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
    g_fixture.panelAtRefresh = g_app.panel;
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save");
    g_fixture.atSave = Now();
}
AMBREL_REPLACE(void, LogFormatted, (const wchar_t*, ...)) {
    Record("log");
}

Snapshot Now() {
    return {g_app.intensity,      g_app.brightness,      g_app.filterOn,
            g_app.useLegacyGamma, g_app.allowExtremeDim, g_app.launchAtStart};
}

void ClickTest::SetUp() {
    g_app = AppState{};
    g_app.mainWindow = kWindow;
    g_app.magnificationReady = true;
    g_fixture = ClickFixture{};
    g_calls.clear();
}
