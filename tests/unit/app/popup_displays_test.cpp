// The popup on desktops with several displays of different scaling, under a model of Windows' rules: a window
// has the DPI of the display that shows most of it; when that changes, WM_DPICHANGED arrives inside the call
// that moved the window, with a suggested rectangle.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "app/display_events.h"
#include "app/popup.h"
#include "app/recorded_pwm_safe.h"
#include "app/shell/foreground.h"
#include "app/shell/popup_dpi.h"
#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_timers);

namespace {

struct Display {
    RECT whole;
    RECT work;
    UINT dpi;
};

HWND const kWindow = MakeHandle<HWND>(500);

std::vector<Display> g_displays;
RECT g_window = {};
UINT g_windowDpi = 96;
POINT g_mouse = {};
POINT g_suggestedShift = {};  // how far Windows moves the window that changes its DPI
int g_moves = 0;

Display MakeDisplay(RECT whole, UINT dpi) {
    const LONG taskbar = MulDiv(40, static_cast<int>(dpi), 96);
    return {whole, {whole.left, whole.top, whole.right, whole.bottom - taskbar}, dpi};
}

long long SharedArea(const RECT& one, const RECT& other) {
    const long long width = std::min(one.right, other.right) - std::max(one.left, other.left);
    const long long height = std::min(one.bottom, other.bottom) - std::max(one.top, other.top);
    return width > 0 && height > 0 ? width * height : 0;
}

UINT DpiWhereTheWindowIs() {
    const Display* best = nullptr;
    for (const Display& display : g_displays) {
        if (SharedArea(g_window, display.whole) > (best != nullptr ? SharedArea(g_window, best->whole) : 0))
            best = &display;
    }
    return best != nullptr ? best->dpi : g_windowDpi;
}

void ChangeDpi(UINT dpi) {
    const auto scaled = [dpi](LONG pixels) {
        return static_cast<LONG>(MulDiv(pixels, static_cast<int>(dpi), static_cast<int>(g_windowDpi)));
    };
    const LONG left = g_window.left + g_suggestedShift.x;
    const LONG top = g_window.top + g_suggestedShift.y;
    const RECT suggested = {left, top, left + scaled(g_window.right - g_window.left),
                            top + scaled(g_window.bottom - g_window.top)};
    g_windowDpi = dpi;
    OnDpiChanged(dpi, &suggested);
}

BOOL WINAPI FakeSetWindowPos(HWND, HWND, int x, int y, int width, int height, UINT flags) {
    EXPECT_LT(++g_moves, 20);
    if (g_moves >= 20) return FALSE;
    if ((flags & SWP_NOSIZE) != 0) {
        width = g_window.right - g_window.left;
        height = g_window.bottom - g_window.top;
    }
    g_window = {x, y, x + width, y + height};
    const UINT dpi = DpiWhereTheWindowIs();
    if (dpi != g_windowDpi) ChangeDpi(dpi);
    return TRUE;
}

BOOL WINAPI FakeGetWindowRect(HWND, RECT* rectangle) {
    *rectangle = g_window;
    return TRUE;
}

BOOL WINAPI FakeGetCursorPos(POINT* position) {
    *position = g_mouse;
    return TRUE;
}

// The handle is the display's number, from 1.
HMONITOR WINAPI FakeMonitorFromPoint(POINT point, DWORD) {
    for (std::size_t i = 0; i < g_displays.size(); ++i) {
        if (PtInRect(&g_displays[i].whole, point)) return MakeHandle<HMONITOR>(i + 1);
    }
    ADD_FAILURE() << "the mouse is on no display";
    return nullptr;
}

const Display& DisplayOf(HMONITOR monitor) {
    return g_displays.at(ValueOf(monitor) - 1);
}

BOOL WINAPI FakeGetMonitorInfo(HMONITOR monitor, MONITORINFO* info) {
    info->rcMonitor = DisplayOf(monitor).whole;
    info->rcWork = DisplayOf(monitor).work;
    return TRUE;
}

BOOL WINAPI FakeInvalidateRect(HWND, const RECT*, BOOL) {
    return TRUE;
}

BOOL WINAPI FakeIsWindowVisible(HWND) {
    return TRUE;
}

class PopupOnDisplays : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_suggestedShift = {};
        g_calls.clear();
    }

    // The popup was last shown at the bottom right of this display.
    static void StartOnDisplay(std::size_t number) {
        const Display& display = g_displays.at(number);
        g_app.dpi = display.dpi;
        g_windowDpi = display.dpi;
        g_window = ExpectedOn(number);
    }

    static void ShowOn(std::size_t number) {
        const RECT& whole = g_displays.at(number).whole;
        g_mouse = {whole.right - 5, whole.bottom - 5};
        g_moves = 0;
        ShowPopup();
    }

    // 320 x 540 units, 10 units from the corner of the work area.
    static RECT ExpectedOn(std::size_t number) {
        const Display& display = g_displays.at(number);
        const double scale = display.dpi / 96.0;
        const LONG right = display.work.right - static_cast<LONG>(10 * scale + 0.5);
        const LONG bottom = display.work.bottom - static_cast<LONG>(10 * scale + 0.5);
        return {right - static_cast<LONG>(320 * scale + 0.5), bottom - static_cast<LONG>(540 * scale + 0.5),
                right, bottom};
    }

    static void ExpectItOn(std::size_t number, const std::string& how) {
        const RECT expected = ExpectedOn(number);
        EXPECT_EQ(g_window.left, expected.left) << how;
        EXPECT_EQ(g_window.top, expected.top) << how;
        EXPECT_EQ(g_window.right, expected.right) << how;
        EXPECT_EQ(g_window.bottom, expected.bottom) << how;
        EXPECT_EQ(g_app.dpi, g_displays.at(number).dpi) << how;
    }

    // From every display to every other, with the suggested rectangle where the window is and elsewhere.
    static void ExpectItFitsEverywhere() {
        for (const POINT shift : {POINT{0, 0}, POINT{37, -23}, POINT{-150, 60}}) {
            g_suggestedShift = shift;
            for (std::size_t from = 0; from < g_displays.size(); ++from) {
                for (std::size_t to = 0; to < g_displays.size(); ++to) {
                    StartOnDisplay(from);
                    ShowOn(to);
                    ExpectItOn(to, "from " + std::to_string(from) + " to " + std::to_string(to) + ", shift " +
                                       std::to_string(shift.x));
                }
            }
        }
    }
};

}  // namespace

AMBREL_REPLACE(bool, BringToForeground, (HWND)) {
    return true;
}

AMBREL_REPLACE(void, SetDpi, (UINT dpi)) {
    g_app.dpi = dpi;
}

AMBREL_REPLACE(void, UpdateDpiForMonitor, (HWND, HMONITOR monitor)) {
    g_app.dpi = DisplayOf(monitor).dpi;
}

AMBREL_SEAM(GetCursorPos, FakeGetCursorPos);
AMBREL_SEAM(MonitorFromPoint, FakeMonitorFromPoint);
AMBREL_SEAM(GetMonitorInfoW, FakeGetMonitorInfo);
AMBREL_SEAM(SetWindowPos, FakeSetWindowPos);
AMBREL_SEAM(GetWindowRect, FakeGetWindowRect);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);
AMBREL_SEAM(IsWindowVisible, FakeIsWindowVisible);

TEST_F(PopupOnDisplays, OneDisplayNeedsOneMove) {
    g_displays = {MakeDisplay({0, 0, 1920, 1080}, 96)};
    StartOnDisplay(0);
    ShowOn(0);
    ExpectItOn(0, "one display");
    EXPECT_EQ(g_moves, 1);
}

TEST_F(PopupOnDisplays, TwoDisplaysOfOneScaling) {
    g_displays = {MakeDisplay({0, 0, 1920, 1080}, 120), MakeDisplay({1920, 0, 3840, 1200}, 120)};
    ExpectItFitsEverywhere();
}

TEST_F(PopupOnDisplays, TwoDisplaysOfMixedScalingSideBySide) {
    g_displays = {MakeDisplay({0, 0, 1920, 1080}, 96), MakeDisplay({1920, 0, 5760, 2160}, 192)};
    ExpectItFitsEverywhere();
    g_displays = {MakeDisplay({0, 0, 3840, 2160}, 192), MakeDisplay({3840, 600, 5760, 1680}, 96)};
    ExpectItFitsEverywhere();
}

TEST_F(PopupOnDisplays, TwoDisplaysOfMixedScalingOneAboveTheOther) {
    g_displays = {MakeDisplay({0, 0, 2560, 1440}, 144), MakeDisplay({300, 1440, 2220, 2520}, 96)};
    ExpectItFitsEverywhere();
}

TEST_F(PopupOnDisplays, ThreeDisplaysOfThreeScalings) {
    g_displays = {MakeDisplay({0, 0, 1920, 1080}, 96), MakeDisplay({1920, -300, 5760, 1860}, 192),
                  MakeDisplay({-2560, 0, 0, 1440}, 144)};
    ExpectItFitsEverywhere();
}

// A popup of 192 DPI whose top-left corner is on the middle display is mostly on the display below it.
TEST_F(PopupOnDisplays, AThirdDisplayThatShowsMostOfTheWindowAtFirstDoesNotKeepIt) {
    g_displays = {MakeDisplay({0, 0, 3840, 2160}, 192), MakeDisplay({3840, 0, 5760, 1080}, 96),
                  MakeDisplay({3840, 1080, 6400, 2520}, 144), MakeDisplay({5760, -400, 8320, 1080}, 120)};
    ExpectItFitsEverywhere();
}
