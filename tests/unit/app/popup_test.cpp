#include "app/popup.h"

#include <gtest/gtest.h>

#include "app/recorded_pwm_safe.h"
#include "app/shell/foreground.h"
#include "app/shell/popup_dpi.h"
#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "ui/accessible_events.h"

AMBREL_USES_SEAMS(recorded_timers);

namespace {

HWND const kWindow = MakeHandle<HWND>(500);
HMONITOR const kMonitor = MakeHandle<HMONITOR>(31);

HMONITOR g_monitor = kMonitor;
bool g_monitorInfoReadable = true;
bool g_foregroundGranted = true;
UINT g_monitorDpi = 96;
ULONGLONG g_now = 0;
RECT g_window = {};
bool g_windowRectReadable = true;
bool g_windowVisible = true;
bool g_windowMinimised = false;

}  // namespace

AMBREL_REPLACE(bool, BringToForeground, (HWND window)) {
    Record("bring to foreground ", ValueOf(window), g_app.popupShown ? " shown" : "");
    return g_foregroundGranted;
}

AMBREL_REPLACE(void, AnnouncePopup, (bool shown)) {
    Record("announce ", shown ? "shown" : "hidden");
}

AMBREL_REPLACE(void, SetDpi, (UINT dpi)) {
    g_app.dpi = dpi;
}

AMBREL_REPLACE(void, UpdateDpiForMonitor, (HWND window, HMONITOR monitor)) {
    Record("update dpi ", ValueOf(window), " ", ValueOf(monitor));
    g_app.dpi = g_monitorDpi;
}

namespace {

BOOL WINAPI FakeGetCursorPos(POINT* position) {
    *position = {-12, 34};
    return TRUE;
}

HMONITOR WINAPI FakeMonitorFromPoint(POINT point, DWORD flags) {
    Record("monitor from ", point.x, " ", point.y, " flags ", flags);
    return g_monitor;
}

BOOL WINAPI FakeGetMonitorInfo(HMONITOR monitor, MONITORINFO* info) {
    Record("monitor info ", ValueOf(monitor));
    EXPECT_EQ(info->cbSize, 40U);
    if (!g_monitorInfoReadable) return FALSE;
    info->rcMonitor = {-1920, 0, 0, 1080};
    info->rcWork = {-1920, 0, 0, 1040};
    return TRUE;
}

BOOL WINAPI FakeSystemParametersInfo(UINT action, UINT, void* value, UINT) {
    Record("system parameter ", action);
    if (action == SPI_GETWORKAREA) *static_cast<RECT*>(value) = {0, 0, 1600, 900};
    return TRUE;
}

BOOL WINAPI FakeSetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags) {
    EXPECT_TRUE((flags & SWP_NOZORDER) != 0 || after == HWND_TOPMOST);
    const std::string size =
        (flags & SWP_NOSIZE) != 0 ? "" : " size " + std::to_string(width) + "x" + std::to_string(height);
    Record("set window pos ", ValueOf(window), " at ", x, " ", y, size, " flags ", flags);
    const bool resized = (flags & SWP_NOSIZE) == 0;
    g_window = {x, y, x + (resized ? width : g_window.right - g_window.left),
                y + (resized ? height : g_window.bottom - g_window.top)};
    return TRUE;
}

BOOL WINAPI FakeGetWindowRect(HWND window, RECT* rectangle) {
    EXPECT_EQ(window, kWindow);
    *rectangle = g_window;
    return g_windowRectReadable;
}

BOOL WINAPI FakeIsWindowVisible(HWND window) {
    EXPECT_EQ(window, kWindow);
    return g_windowVisible;
}

BOOL WINAPI FakeIsIconic(HWND window) {
    EXPECT_EQ(window, kWindow);
    return g_windowMinimised;
}

BOOL WINAPI FakeInvalidateRect(HWND window, const RECT* area, BOOL) {
    Record("invalidate ", ValueOf(window), area == nullptr ? "" : " part", g_app.popupArmed ? " armed" : "");
    return TRUE;
}

BOOL WINAPI FakeShowWindow(HWND window, int command) {
    Record("show window ", ValueOf(window), " ", command, " shown ", g_app.popupShown, " armed ",
           g_app.popupArmed, " hidden at ", g_app.popupHiddenAt);
    g_windowVisible = false;
    return TRUE;
}

ULONGLONG WINAPI FakeGetTickCount64() {
    return g_now;
}

class Popup : public testing::Test {
protected:
    static void SetWindowSize(int width, int height) { g_window = {-77, 33, -77 + width, 33 + height}; }

    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_calls.clear();
        g_monitor = kMonitor;
        g_monitorInfoReadable = true;
        g_foregroundGranted = true;
        g_monitorDpi = 96;
        g_now = 123456;
        // It was shown here before.
        SetWindowSize(320, 540);
        g_windowRectReadable = true;
        g_windowVisible = true;
        g_windowMinimised = false;
    }
};

}  // namespace

AMBREL_SEAM(GetCursorPos, FakeGetCursorPos);
AMBREL_SEAM(MonitorFromPoint, FakeMonitorFromPoint);
AMBREL_SEAM(GetMonitorInfoW, FakeGetMonitorInfo);
AMBREL_SEAM(SystemParametersInfoW, FakeSystemParametersInfo);
AMBREL_SEAM(SetWindowPos, FakeSetWindowPos);
AMBREL_SEAM(GetWindowRect, FakeGetWindowRect);
AMBREL_SEAM(IsWindowVisible, FakeIsWindowVisible);
AMBREL_SEAM(IsIconic, FakeIsIconic);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);
AMBREL_SEAM(ShowWindow, FakeShowWindow);
AMBREL_SEAM(GetTickCount64, FakeGetTickCount64);

TEST_F(Popup, IsPlacedShownActivatedAndPolledAfterTheDisplaysAreQueried) {
    ShowPopup();
    // The flags are SWP_NOSIZE and SWP_SHOWWINDOW; the monitor is the nearest one.
    EXPECT_EQ(g_calls, (CallRecord{
                           "pwm refresh",
                           "monitor from -12 34 flags 2",
                           "monitor info 31",
                           "update dpi 500 31",
                           "set window pos 500 at -330 490 flags 65",
                           "announce shown",
                           "bring to foreground 500 shown",
                           "invalidate 500 armed",
                           "set timer 6 150",
                       }));
    EXPECT_TRUE(g_app.popupShown);
    EXPECT_TRUE(g_app.popupArmed);
}

// Another program can minimise it. SW_SHOWNOACTIVATE restores a window without activating it.
TEST_F(Popup, IsRestoredBeforeItIsPlacedIfItIsMinimised) {
    g_windowMinimised = true;
    ShowPopup();
    ASSERT_GE(g_calls.size(), 6U);
    EXPECT_EQ(g_calls[4], "show window 500 4 shown 0 armed 0 hidden at 0");
    EXPECT_EQ(g_calls[5], "set window pos 500 at -330 490 flags 65");
}

TEST_F(Popup, IsNotShownIfTheProgramQuitsDuringTheDisplayQuery) {
    g_duringDisplayQuery = [] { g_app.ending = true; };
    ShowPopup();
    EXPECT_EQ(g_calls, (CallRecord{"pwm refresh"}));
    EXPECT_FALSE(g_app.popupShown);
}

TEST_F(Popup, IsPlacedWithTheScalingOfTheMonitorUnderTheMouse) {
    g_monitorDpi = 144;
    SetWindowSize(480, 810);
    ShowPopup();
    // 480 x 810 and a margin of 15 on the work area that ends at 0, 1040.
    EXPECT_EQ(g_calls[4], "set window pos 500 at -495 215 flags 65");
}

TEST_F(Popup, AWindowThatKeptTheSizeOfAnotherScalingGetsTheSizeItWasPlacedFor) {
    SetWindowSize(640, 1080);
    ShowPopup();
    // The second flags are SWP_NOZORDER and SWP_NOACTIVATE.
    EXPECT_EQ(g_calls[4], "set window pos 500 at -330 490 flags 65");
    EXPECT_EQ(g_calls[5], "set window pos 500 at -330 490 size 320x540 flags 20");
    EXPECT_EQ(g_calls[6], "announce shown");
}

TEST_F(Popup, AWindowWhoseSizeIsUnknownIsShownAsItIs) {
    SetWindowSize(640, 1080);
    g_windowRectReadable = false;
    ShowPopup();
    EXPECT_EQ(g_calls[5], "announce shown");
}

TEST_F(Popup, WithoutAMonitorThePrimaryWorkAreaIsUsed) {
    g_monitor = nullptr;
    ShowPopup();
    EXPECT_EQ(g_calls, (CallRecord{
                           "pwm refresh",
                           "monitor from -12 34 flags 2",
                           "system parameter 48",
                           "update dpi 500 0",
                           "set window pos 500 at 1270 350 flags 65",
                           "announce shown",
                           "bring to foreground 500 shown",
                           "invalidate 500 armed",
                           "set timer 6 150",
                       }));
}

TEST_F(Popup, WithoutMonitorInfoThePrimaryWorkAreaIsUsedWithThatMonitorsDpi) {
    g_monitorInfoReadable = false;
    ShowPopup();
    EXPECT_EQ(g_calls, (CallRecord{
                           "pwm refresh",
                           "monitor from -12 34 flags 2",
                           "monitor info 31",
                           "system parameter 48",
                           "update dpi 500 31",
                           "set window pos 500 at 1270 350 flags 65",
                           "announce shown",
                           "bring to foreground 500 shown",
                           "invalidate 500 armed",
                           "set timer 6 150",
                       }));
}

TEST_F(Popup, WithoutTheForegroundItIsShownAndPolledButNotArmed) {
    g_foregroundGranted = false;
    g_app.popupArmed = true;
    ShowPopup();
    EXPECT_TRUE(g_app.popupShown);
    EXPECT_FALSE(g_app.popupArmed);
    EXPECT_EQ(g_calls.back(), "set timer 6 150");
}

TEST_F(Popup, HidingStopsThePollAndUpdatesTheStateBeforeTheWindowIsHidden) {
    g_app.popupShown = true;
    g_app.popupArmed = true;
    HidePopup();
    EXPECT_EQ(g_calls, (CallRecord{"kill timer 6", "show window 500 0 shown 0 armed 0 hidden at 123456",
                                   "announce hidden"}));
}

// A menu row that is chosen, or a box that is closed, hides the popup whether it is shown or not; the next
// click on the icon must open it.
TEST_F(Popup, HidingAHiddenPopupKeepsTheTimeWhenItWasHidden) {
    HidePopup();
    g_now = 123999;
    HidePopup();
    EXPECT_FALSE(g_app.popupShown);
    EXPECT_EQ(g_app.popupHiddenAt, 123456U);
    EXPECT_EQ(g_calls[g_calls.size() - 2], "show window 500 0 shown 0 armed 0 hidden at 123456");
}

TEST_F(Popup, HidingKeepsThePanel) {
    g_app.panel = Panel::Settings;
    HidePopup();
    EXPECT_EQ(g_app.panel, Panel::Settings);
}
