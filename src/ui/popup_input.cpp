#include "ui/popup_input.h"

#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "app/state/timers.h"
#include "ui/popup_actions.h"
#include "ui/regions.h"
#include "ui/slider_geometry.h"
#include "win32/platform.h"

namespace {

// GetAsyncKeyState reports physical buttons; mouse messages report logical ones.
bool IsPrimaryButtonDown() {
    const int button = GetSystemMetrics(SM_SWAPBUTTON) != 0 ? VK_RBUTTON : VK_LBUTTON;
    return GetAsyncKeyState(button) < 0;
}

// The drag is recorded last: SetCapture may report the loss of an earlier capture.
void StartDrag(Slider slider, double value, int y) {
    SetCapture(g_app.mainWindow);
    g_app.dragSlider = slider;
    g_app.dragStartY = y;
    g_app.dragStartValue = value;
}

}  // namespace

void OnMouseDown(int x, int y) {
    // The release of a previous drag may have been lost to another window.
    OnMouseUp();
    const int unitY = UnscaleForDpi(y);
    const Region region = HitTest(UnscaleForDpi(x), unitY);
    switch (SliderOf(region)) {
        case Slider::Warmth: StartDrag(Slider::Warmth, g_app.intensity, unitY); return;
        case Slider::Brightness: StartDrag(Slider::Brightness, g_app.brightness, unitY); return;
        case Slider::None: PressRegion(region); return;
    }
}

void OnMouseMove(int, int y) {
    if (g_app.dragSlider == Slider::None) return;
    const int distance = g_app.dragStartY - UnscaleForDpi(y);
    MoveSlider(g_app.dragSlider, static_cast<double>(distance) / kSliderTravel + g_app.dragStartValue);
}

void OnMouseUp() {
    if (g_app.dragSlider == Slider::None) return;
    ReleaseCapture();
    g_app.dragSlider = Slider::None;
    RestartTimer(TimerId::SaveSettings);
}

void OnCaptureLost() {
    g_app.dragSlider = Slider::None;
}

void EndDragIfReleased() {
    if (g_app.dragSlider != Slider::None && !IsPrimaryButtonDown()) OnMouseUp();
}
