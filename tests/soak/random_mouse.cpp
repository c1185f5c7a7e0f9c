// Random sequences of mouse messages at every scaling. The expected slider and value are computed here.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "app/state/timers.h"
#include "faults/simulated_platform.h"
#include "soak/attack.h"
#include "soak/painted_popup.h"
#include "soak/properties.h"
#include "ui/regions.h"

namespace {

constexpr int kTrackTop = 107, kTrackBottom = 305, kTrackTravel = 198;
constexpr int kWarmthLeft = 54, kBrightnessLeft = 214, kTrackWidth = 52;
constexpr double kTolerance = 1e-9;

int ToUnits(int pixels) {
    return static_cast<int>(std::lround(pixels * 96.0 / g_app.dpi));
}

Slider SliderAt(POINT pixel) {
    const int x = ToUnits(pixel.x);
    const int y = ToUnits(pixel.y);
    if (g_app.panel != Panel::Main || y < kTrackTop || y >= kTrackBottom) return Slider::None;
    if (x >= kWarmthLeft && x < kWarmthLeft + kTrackWidth) return Slider::Warmth;
    return x >= kBrightnessLeft && x < kBrightnessLeft + kTrackWidth ? Slider::Brightness : Slider::None;
}

double ValueOf(Slider slider) {
    return slider == Slider::Warmth ? g_app.intensity : g_app.brightness;
}

POINT AnyPixel(RandomSource& random) {
    if (random.OneIn(20)) return {random.Between(-32768, 32767), random.Between(-32768, 32767)};
    if (random.OneIn(2)) {
        return {ScaleByDpi(random.Between(50, 110) + (random.OneIn(2) ? 160 : 0)),
                ScaleByDpi(random.Between(95, 315))};
    }
    return {ScaleByDpi(random.Between(-20, 340)), ScaleByDpi(random.Between(-20, 560))};
}

LRESULT SendMouse(UINT message, POINT pixel) {
    char text[96];
    std::snprintf(text, sizeof(text), "mouse message %#x at %ld, %ld, %u DPI, panel %d", message, pixel.x,
                  pixel.y, g_app.dpi, static_cast<int>(g_app.panel));
    RecordStep(text);
    return Send(message, MK_LBUTTON, MAKELPARAM(pixel.x, pixel.y));
}

void RequireDragged(Slider slider, double start, POINT from, POINT to) {
    const double moved = start + static_cast<double>(ToUnits(from.y) - ToUnits(to.y)) / kTrackTravel;
    const double floor = slider == Slider::Warmth || g_app.allowExtremeDim ? 0.0 : 0.1;
    const double expected = std::clamp(moved, floor, 1.0);
    Require(
        std::abs(ValueOf(slider) - expected) < kTolerance,
        "the slider is at " + std::to_string(ValueOf(slider)) + " instead of " + std::to_string(expected));
}

void Drag(RandomSource& random, Slider slider, double start, POINT from) {
    for (unsigned moves = random.Below(6); moves > 0; --moves) {
        const POINT to = AnyPixel(random);
        SendMouse(WM_MOUSEMOVE, to);
        RequireDragged(slider, start, from, to);
        if (random.OneIn(200)) RequireThumbPainted(slider);
    }
}

// The capture is lost as another window takes it.
void LoseCapture() {
    RecordStep("the capture is lost");
    ReleaseCapture();
    DispatchQueue();
}

void RunSequence(RandomSource& random) {
    const POINT from = AnyPixel(random);
    const Slider slider = SliderAt(from);
    const double start = slider != Slider::None ? ValueOf(slider) : 0.0;
    SendMouse(WM_LBUTTONDOWN, from);
    Require(g_app.dragSlider == slider, "the press starts the drag of another slider");
    if (slider == Slider::None) {
        // A move without a drag changes nothing.
        const double warmth = g_app.intensity;
        SendMouse(WM_MOUSEMOVE, AnyPixel(random));
        Require(std::abs(g_app.intensity - warmth) < kTolerance, "a move without a drag changes the warmth");
    } else {
        Drag(random, slider, start, from);
    }
    if (random.OneIn(20)) return;  // the release goes to another window
    if (random.OneIn(20)) {
        LoseCapture();
    } else {
        SendMouse(WM_LBUTTONUP, AnyPixel(random));
    }
    Require(g_app.dragSlider == Slider::None, "the drag goes on after its end");
    Require(GetCapture() != g_app.mainWindow, "the capture is kept after the drag");
}

void RunSequences() {
    RandomSource& random = g_round->random;
    for (int i = 0; i < g_round->steps && !Failed(); ++i) {
        if (i % 50 == 0) MoveToMonitorOf(kScalings[random.Below(std::size(kScalings))]);
        RunSequence(random);
        if (random.OneIn(20)) DispatchQueue();
        RequireConsistentState();
    }
}

}  // namespace

void AttackWithMouse() {
    RunSessionWith(RunSequences);
}
