// The sliders and the mouse capture, with a platform that sends WM_CAPTURECHANGED as Windows does: to the
// window that had the capture, with the window that gains it.
#include <gtest/gtest.h>

#include "app/session_end.h"
#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/window_proc.h"
#include "filter/filter.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_timers);

namespace {

HWND const kWindow = MakeHandle<HWND>(500);
HWND const kOther = MakeHandle<HWND>(600);
HWND g_capture = nullptr;

HWND WINAPI FakeSetCapture(HWND window) {
    HWND before = g_capture;
    g_capture = window;
    if (before == kWindow) MainWindowProc(kWindow, WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(window));
    return before;
}

BOOL WINAPI FakeReleaseCapture() {
    if (FakeSetCapture(nullptr) != nullptr) Record("release capture");
    return TRUE;
}

void Send(UINT message, int x, int y) {
    MainWindowProc(kWindow, message, 0, MAKELPARAM(x, y));
}

class Capture : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_app.intensity = 0.5;
        g_app.brightness = 0.5;
        g_capture = nullptr;
        g_calls.clear();
    }

    // A complete drag of WARMTH moves the value by ten of the track's 198 units and releases the capture.
    static void ExpectWorkingSliders() {
        const double before = g_app.intensity;
        Send(WM_LBUTTONDOWN, 80, 200);
        EXPECT_EQ(g_capture, kWindow);
        Send(WM_MOUSEMOVE, 80, 190);
        EXPECT_EQ(g_app.intensity, 10.0 / 198.0 + before);
        Send(WM_LBUTTONUP, 80, 190);
        EXPECT_EQ(g_capture, nullptr);
        EXPECT_EQ(g_app.dragSlider, Slider::None);
    }
};

}  // namespace

AMBREL_SEAM(SetCapture, FakeSetCapture);
AMBREL_SEAM(ReleaseCapture, FakeReleaseCapture);

AMBREL_REPLACE(void, ApplyFilter, ()) {}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {}
AMBREL_REPLACE(void, ContinueSession, ()) {}

TEST_F(Capture, TwoPressesWithoutAReleaseStartACleanDrag) {
    Send(WM_LBUTTONDOWN, 80, 200);
    Send(WM_MOUSEMOVE, 80, 150);
    Send(WM_LBUTTONDOWN, 240, 210);
    EXPECT_EQ(g_app.dragSlider, Slider::Brightness);
    EXPECT_EQ(g_app.dragStartY, 210);
    EXPECT_EQ(g_capture, kWindow);
    Send(WM_MOUSEMOVE, 240, 200);
    EXPECT_EQ(g_app.brightness, 10.0 / 198.0 + 0.5);
    EXPECT_EQ(g_app.intensity, 50.0 / 198.0 + 0.5);
    Send(WM_LBUTTONUP, 240, 200);
    EXPECT_EQ(g_capture, nullptr);
    ExpectWorkingSliders();
}

TEST_F(Capture, APressOnTheSameSliderStartsFromItsPresentValue) {
    Send(WM_LBUTTONDOWN, 80, 200);
    Send(WM_MOUSEMOVE, 80, 190);
    Send(WM_LBUTTONDOWN, 80, 190);
    EXPECT_EQ(g_app.dragStartValue, 10.0 / 198.0 + 0.5);
    Send(WM_LBUTTONUP, 80, 190);
    ExpectWorkingSliders();
}

TEST_F(Capture, APressElsewhereEndsADragWhoseReleaseWasLostAndSavesItsValue) {
    Send(WM_LBUTTONDOWN, 80, 200);
    Send(WM_MOUSEMOVE, 80, 190);
    Send(WM_LBUTTONDOWN, 160, 20);
    EXPECT_EQ(g_app.dragSlider, Slider::None);
    EXPECT_EQ(g_calls, (CallRecord{"release capture", "kill timer 1", "set timer 1 500"}));
    ExpectWorkingSliders();
}

TEST_F(Capture, AnotherWindowThatTakesTheCaptureEndsTheDrag) {
    Send(WM_LBUTTONDOWN, 80, 200);
    FakeSetCapture(kOther);
    EXPECT_EQ(g_app.dragSlider, Slider::None);
    Send(WM_MOUSEMOVE, 80, 100);
    EXPECT_EQ(g_app.intensity, 0.5);
    g_capture = nullptr;
    ExpectWorkingSliders();
}
