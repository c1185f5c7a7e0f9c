// The mouse on the sliders: presses, moves, releases and lost captures.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/filter.h"
#include "store/settings.h"
#include "support/seam.h"
#include "ui/popup_input.h"

namespace {

using Calls = std::vector<std::string>;

Calls g_calls;
HWND const kWindow = reinterpret_cast<HWND>(0x1234);

std::string Number(UINT_PTR value) {
    return std::to_string(value);
}

HWND WINAPI FakeSetCapture(HWND window) {
    g_calls.push_back(window == kWindow ? "capture" : "capture of another window");
    return nullptr;
}

// Like Windows, sends the capture message before the call returns.
BOOL WINAPI FakeReleaseCapture() {
    g_calls.push_back("release");
    OnCaptureLost();
    return TRUE;
}

UINT_PTR WINAPI FakeSetTimer(HWND, UINT_PTR id, UINT period, TIMERPROC) {
    g_calls.push_back("set " + Number(id) + " " + Number(period));
    EXPECT_EQ(g_app.dragSlider, Slider::None) << "the drag is over before the timer starts";
    return id;
}

BOOL WINAPI FakeKillTimer(HWND, UINT_PTR id) {
    g_calls.push_back("kill " + Number(id));
    return TRUE;
}

int g_buttonDown = 0;  // the virtual key of the physical button
bool g_buttonsSwapped = false;

SHORT WINAPI FakeGetAsyncKeyState(int key) {
    return key == g_buttonDown ? static_cast<SHORT>(0x8000) : SHORT{1};
}

int WINAPI FakeGetSystemMetrics(int metric) {
    EXPECT_EQ(metric, SM_SWAPBUTTON);
    return g_buttonsSwapped;
}

// Pixels to design units, rounded half away from zero.
int Units(int pixels, int dpi) {
    return static_cast<int>(std::lround(static_cast<double>(pixels) * 96.0 / dpi));
}

class PopupDrag : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_app.intensity = 0.5;
        g_app.brightness = 0.5;
        g_calls.clear();
        g_buttonDown = 0;
        g_buttonsSwapped = false;
    }

    void PressWarmth(int y) {
        OnMouseDown(80, y);
        g_calls.clear();
    }

    void PressBrightness(int y) {
        OnMouseDown(240, y);
        g_calls.clear();
    }
};

const Calls kMoved = {"apply", "refresh"};
const Calls kReleased = {"release", "kill 1", "set 1 500"};

}  // namespace

AMBREL_SEAM(SetCapture, FakeSetCapture);
AMBREL_SEAM(ReleaseCapture, FakeReleaseCapture);
AMBREL_SEAM(GetAsyncKeyState, FakeGetAsyncKeyState);
AMBREL_SEAM(GetSystemMetrics, FakeGetSystemMetrics);
AMBREL_SEAM(SetTimer, FakeSetTimer);
AMBREL_SEAM(KillTimer, FakeKillTimer);

AMBREL_REPLACE(void, ApplyFilter, ()) {
    g_calls.push_back("apply");
}
AMBREL_REPLACE(void, ClearFilter, ()) {
    g_calls.push_back("clear");
}
AMBREL_REPLACE(void, ApplyPreset, (FilterPreset)) {
    g_calls.push_back("preset");
}
AMBREL_REPLACE(void, ToggleLegacyMode, ()) {
    g_calls.push_back("toggle legacy");
}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    g_calls.push_back("refresh");
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    g_calls.push_back("save");
}

TEST_F(PopupDrag, APressOnWarmthRecordsTheStartAndCapturesWithoutMovingTheValue) {
    g_app.intensity = 0.385;
    OnMouseDown(80, 120);
    EXPECT_EQ(g_app.dragSlider, Slider::Warmth);
    EXPECT_EQ(g_app.dragStartY, 120);
    EXPECT_EQ(g_app.dragStartValue, 0.385);
    EXPECT_EQ(g_app.intensity, 0.385);
    EXPECT_EQ(g_calls, Calls{"capture"});
}

TEST_F(PopupDrag, APressOnBrightnessRecordsTheStartAndCapturesWithoutMovingTheValue) {
    g_app.brightness = 0.85;
    OnMouseDown(240, 304);
    EXPECT_EQ(g_app.dragSlider, Slider::Brightness);
    EXPECT_EQ(g_app.dragStartY, 304);
    EXPECT_EQ(g_app.dragStartValue, 0.85);
    EXPECT_EQ(g_app.brightness, 0.85);
    EXPECT_EQ(g_calls, Calls{"capture"});
}

TEST_F(PopupDrag, APressOutsideTheTrackStartsNoDrag) {
    for (const POINT point :
         {POINT{53, 200}, POINT{106, 200}, POINT{80, 106}, POINT{80, 305}, POINT{160, 200}}) {
        OnMouseDown(point.x, point.y);
        EXPECT_EQ(g_app.dragSlider, Slider::None) << point.x << "," << point.y;
    }
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupDrag, MovingUpRaisesTheValueInProportionToTheTravel) {
    PressWarmth(200);
    OnMouseMove(80, 160);
    EXPECT_EQ(g_app.intensity, 40.0 / 198.0 + 0.5);
    EXPECT_EQ(g_app.brightness, 0.5);
    EXPECT_EQ(g_calls, kMoved);
}

TEST_F(PopupDrag, MovingDownLowersTheValue) {
    PressBrightness(200);
    OnMouseMove(240, 233);
    EXPECT_EQ(g_app.brightness, -33.0 / 198.0 + 0.5);
    EXPECT_EQ(g_app.intensity, 0.5);
    EXPECT_EQ(g_calls, kMoved);
}

TEST_F(PopupDrag, TheTravelIs198Units) {
    g_app.intensity = 0.0;
    PressWarmth(304);
    OnMouseMove(80, 107);
    EXPECT_EQ(g_app.intensity, 197.0 / 198.0);
    OnMouseMove(80, 106);
    EXPECT_EQ(g_app.intensity, 1.0);
}

TEST_F(PopupDrag, EveryMoveIsCountedFromThePressNotFromTheMoveBefore) {
    PressWarmth(200);
    for (int y : {199, 150, 250, 201})
        OnMouseMove(80, y);
    EXPECT_EQ(g_app.intensity, -1.0 / 198.0 + 0.5);
    EXPECT_EQ(g_app.dragStartY, 200);
    EXPECT_EQ(g_app.dragStartValue, 0.5);
    EXPECT_EQ(g_calls,
              (Calls{"apply", "refresh", "apply", "refresh", "apply", "refresh", "apply", "refresh"}));
}

TEST_F(PopupDrag, TheValueIsContinuous) {
    g_app.intensity = 0.123456789;
    PressWarmth(200);
    OnMouseMove(80, 199);
    EXPECT_EQ(g_app.intensity, 1.0 / 198.0 + 0.123456789);
    OnMouseMove(80, 200);
    EXPECT_EQ(g_app.intensity, 0.123456789);
}

TEST_F(PopupDrag, TheHorizontalPositionIsIgnored) {
    PressWarmth(200);
    OnMouseMove(-32768, 190);
    EXPECT_EQ(g_app.intensity, 10.0 / 198.0 + 0.5);
    OnMouseMove(240, 190);
    EXPECT_EQ(g_app.intensity, 10.0 / 198.0 + 0.5);
    EXPECT_EQ(g_app.brightness, 0.5);
}

TEST_F(PopupDrag, BeyondTheTrackTheValueIsClampedAndReturnsWhereItLeftTheLimit) {
    PressWarmth(200);
    OnMouseMove(80, -5000);
    EXPECT_EQ(g_app.intensity, 1.0);
    OnMouseMove(80, 100);
    EXPECT_EQ(g_app.intensity, 1.0);
    OnMouseMove(80, 101);
    EXPECT_EQ(g_app.intensity, 1.0);
    OnMouseMove(80, 102);
    EXPECT_EQ(g_app.intensity, 98.0 / 198.0 + 0.5);
    OnMouseMove(80, 5000);
    EXPECT_EQ(g_app.intensity, 0.0);
    OnMouseMove(80, 299);
    EXPECT_EQ(g_app.intensity, 0.0);
    OnMouseMove(80, 298);
    EXPECT_EQ(g_app.intensity, -98.0 / 198.0 + 0.5);
    OnMouseMove(80, 200);
    EXPECT_EQ(g_app.intensity, 0.5);
}

TEST_F(PopupDrag, TheEndsOfTheCoordinatesOfAMessageClampToo) {
    PressWarmth(200);
    OnMouseMove(80, -32768);
    EXPECT_EQ(g_app.intensity, 1.0);
    OnMouseMove(80, 32767);
    EXPECT_EQ(g_app.intensity, 0.0);
}

TEST_F(PopupDrag, BrightnessStopsAtATenthWithoutExtremeDim) {
    PressBrightness(200);
    OnMouseMove(240, 1000);
    EXPECT_EQ(g_app.brightness, 0.1);
    OnMouseMove(240, -1000);
    EXPECT_EQ(g_app.brightness, 1.0);
}

TEST_F(PopupDrag, BrightnessGoesDownToZeroWithExtremeDim) {
    g_app.allowExtremeDim = true;
    PressBrightness(200);
    OnMouseMove(240, 1000);
    EXPECT_EQ(g_app.brightness, 0.0);
    OnMouseMove(240, 290);
    EXPECT_EQ(g_app.brightness, -90.0 / 198.0 + 0.5);
}

TEST_F(PopupDrag, WarmthReachesZeroWithoutExtremeDim) {
    PressWarmth(200);
    OnMouseMove(80, 1000);
    EXPECT_EQ(g_app.intensity, 0.0);
}

TEST_F(PopupDrag, AMoveWithoutADragIsIgnored) {
    OnMouseMove(80, 150);
    EXPECT_EQ(g_app.intensity, 0.5);
    EXPECT_EQ(g_app.brightness, 0.5);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupDrag, AMoveWithTheFilterOffStillApplies) {
    g_app.filterOn = false;
    PressWarmth(200);
    OnMouseMove(80, 199);
    EXPECT_EQ(g_calls, kMoved);
}

TEST_F(PopupDrag, TheReleaseSchedulesTheSaveAfterTheCaptureMessageHasEndedTheDrag) {
    PressWarmth(200);
    OnMouseMove(80, 190);
    g_calls.clear();
    OnMouseUp();
    EXPECT_EQ(g_app.dragSlider, Slider::None);
    EXPECT_EQ(g_calls, kReleased);
}

TEST_F(PopupDrag, APressAndReleaseWithoutMovementLeavesTheValueAndSchedulesTheSave) {
    g_app.intensity = 0.385;
    PressWarmth(200);
    OnMouseUp();
    EXPECT_EQ(g_app.intensity, 0.385);
    EXPECT_EQ(g_calls, kReleased);
}

TEST_F(PopupDrag, AReleaseWithoutADragDoesNothing) {
    OnMouseUp();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupDrag, ASecondReleaseDoesNothing) {
    PressWarmth(200);
    OnMouseUp();
    g_calls.clear();
    OnMouseUp();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupDrag, ALostCaptureEndsTheDragAndSavesNothing) {
    PressWarmth(200);
    OnMouseMove(80, 190);
    g_calls.clear();
    OnCaptureLost();
    OnMouseMove(80, 150);
    OnMouseUp();
    EXPECT_EQ(g_app.dragSlider, Slider::None);
    EXPECT_EQ(g_app.intensity, 10.0 / 198.0 + 0.5);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupDrag, WithoutADragNothingIsReleased) {
    EndDragIfReleased();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupDrag, ADragContinuesWhileThePrimaryButtonIsDown) {
    PressWarmth(200);
    for (const bool swapped : {false, true}) {
        g_buttonsSwapped = swapped;
        g_buttonDown = swapped ? VK_RBUTTON : VK_LBUTTON;
        EndDragIfReleased();
        EXPECT_EQ(g_app.dragSlider, Slider::Warmth);
    }
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupDrag, ADragWhoseReleaseWentToAnotherWindowEndsAndIsSaved) {
    for (const bool swapped : {false, true}) {
        PressBrightness(200);
        g_buttonsSwapped = swapped;
        g_buttonDown = swapped ? VK_LBUTTON : VK_RBUTTON;
        EndDragIfReleased();
        EXPECT_EQ(g_calls, kReleased);
        EXPECT_EQ(g_app.dragSlider, Slider::None);
    }
}

TEST_F(PopupDrag, PixelsBecomeDesignUnitsRoundedHalfAwayFromZero) {
    for (int dpi : {96, 120, 144, 192}) {
        g_app.dpi = static_cast<std::uint32_t>(dpi);
        for (int y = -500; y <= 1200; y += 7) {
            g_app.dragSlider = Slider::Brightness;
            g_app.allowExtremeDim = true;
            g_app.dragStartY = Units(y, dpi) + 20;
            g_app.dragStartValue = 0.25;
            OnMouseMove(0, y);
            ASSERT_EQ(g_app.brightness, 20.0 / 198.0 + 0.25) << "y " << y << " at " << dpi;
        }
    }
}

TEST_F(PopupDrag, HalfAUnitAboveTheWindowRoundsAwayFromZero) {
    g_app.dpi = 192;
    g_app.dragSlider = Slider::Warmth;
    g_app.dragStartY = 0;
    g_app.dragStartValue = 0.25;
    OnMouseMove(0, -1);
    EXPECT_EQ(g_app.intensity, 1.0 / 198.0 + 0.25);
    OnMouseMove(0, 1);
    EXPECT_EQ(g_app.intensity, -1.0 / 198.0 + 0.25);
    OnMouseMove(0, -3);
    EXPECT_EQ(g_app.intensity, 2.0 / 198.0 + 0.25);
}

TEST_F(PopupDrag, ADpiOfZeroIsTreatedAs96) {
    g_app.dpi = 0;
    OnMouseDown(80, 200);
    EXPECT_EQ(g_app.dragStartY, 200);
    OnMouseMove(80, 190);
    EXPECT_EQ(g_app.intensity, 10.0 / 198.0 + 0.5);
}

struct TrackEdge {
    std::uint32_t dpi;
    int firstX, lastX;  // pixels
    int firstY, lastY;
};

// The track (54,107)-(106,305): a pixel belongs to the unit to which it rounds.
constexpr TrackEdge kTrackEdges[] = {
    {96, 54, 105, 107, 304},
    {120, 67, 131, 134, 380},  // 66.875.. is 67; 131 / 1.25 = 104.8, 132 would be 105.6
    {144, 81, 158, 160, 456},
    {192, 107, 210, 213, 608},
};

TEST_F(PopupDrag, PressesAreConvertedBeforeTheHitTest) {
    for (const TrackEdge& edge : kTrackEdges) {
        SCOPED_TRACE(edge.dpi);
        const auto hits = [&](int x, int y) {
            g_app.dragSlider = Slider::None;
            g_app.dpi = edge.dpi;
            OnMouseDown(x, y);
            return g_app.dragSlider == Slider::Warmth;
        };
        EXPECT_TRUE(hits(edge.firstX, edge.firstY));
        EXPECT_TRUE(hits(edge.lastX, edge.lastY));
        EXPECT_FALSE(hits(edge.firstX - 1, edge.firstY));
        EXPECT_FALSE(hits(edge.firstX, edge.firstY - 1));
        EXPECT_FALSE(hits(edge.lastX + 1, edge.lastY));
        EXPECT_FALSE(hits(edge.lastX, edge.lastY + 1));
    }
}

TEST_F(PopupDrag, NegativePositionsHitNothing) {
    OnMouseDown(-80, -200);
    OnMouseDown(-32768, 200);
    OnMouseDown(80, -32768);
    EXPECT_EQ(g_app.dragSlider, Slider::None);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PopupDrag, ADpiThatChangesWhileASliderIsHeldAppliesFromTheNextMove) {
    PressWarmth(200);
    g_app.dpi = 192;
    OnMouseMove(160, 400);
    EXPECT_EQ(g_app.intensity, 0.5) << "the pointer is where the press was, in units";
    OnMouseMove(160, 380);
    EXPECT_EQ(g_app.intensity, 10.0 / 198.0 + 0.5);
    g_app.dpi = 144;
    OnMouseMove(120, 285);
    EXPECT_EQ(g_app.intensity, 10.0 / 198.0 + 0.5);
}

TEST_F(PopupDrag, ThePressedSliderIsTheOneUnderThePointer) {
    OnMouseDown(80, 200);
    OnMouseUp();
    OnMouseDown(240, 210);
    EXPECT_EQ(g_app.dragSlider, Slider::Brightness);
    EXPECT_EQ(g_app.dragStartY, 210);
}

TEST_F(PopupDrag, OnTheSettingsPanelTheTracksDoNotReact) {
    g_app.panel = Panel::Settings;
    OnMouseDown(80, 120);
    OnMouseDown(240, 300);
    EXPECT_EQ(g_app.dragSlider, Slider::None);
    EXPECT_TRUE(g_calls.empty());
}
