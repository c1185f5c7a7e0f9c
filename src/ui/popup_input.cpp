#include "ui/popup_input.h"

#include <algorithm>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "app/state/timers.h"
#include "brightness/pwm_safe.h"
#include "filter/filter.h"
#include "filter/gamma_fix.h"
#include "store/autostart.h"
#include "store/settings.h"
#include "ui/slider_geometry.h"
#include "ui/support_copy.h"

namespace {

// The drag is recorded last: SetCapture may report the loss of an earlier capture.
void StartDrag(Slider slider, double value, int y) {
    SetCapture(g_app.mainWindow);
    g_app.dragSlider = slider;
    g_app.dragStartY = y;
    g_app.dragStartValue = value;
}

void ClickPower() {
    g_app.filterOn = !g_app.filterOn;
    ApplyFilter();
    RefreshPopupAndTray();
    RestartTimer(TimerId::SaveSettings);
}

void ClickGear() {
    g_app.panel = Panel::Settings;
    RefreshPopupAndTray();
}

void ClickClose() {
    g_app.panel = Panel::Main;
    RefreshPwmSafeTargets(false);
    RefreshPopupAndTray();
}

void ClickPwmCard() {
    TogglePwmSafeByUser();
    RefreshPopupAndTray();
}

void ClickLaunchAtStart() {
    SetAutostart(!g_app.launchAtStart);
    SaveSettings();
    RefreshPopupAndTray();
}

// Switching extreme dim off raises a darker brightness to the minimum.
void ClickExtremeDim() {
    g_app.allowExtremeDim = !g_app.allowExtremeDim;
    g_app.brightness = ClampBrightness(g_app.brightness, g_app.allowExtremeDim);
    if (g_app.filterOn) ApplyFilter();
    SaveSettings();
    RefreshPopupAndTray();
}

void ClickLegacyMode() {
    ToggleLegacyMode();
    SaveSettings();
    RefreshPopupAndTray();
}

}  // namespace

void OnMouseDown(int x, int y) {
    // The release of the drag before was lost: another window received it.
    OnMouseUp();
    const int unitY = UnscaleForDpi(y);
    const Region region = HitTest(UnscaleForDpi(x), unitY);
    switch (SliderOf(region)) {
        case Slider::Warmth: StartDrag(Slider::Warmth, g_app.intensity, unitY); return;
        case Slider::Brightness: StartDrag(Slider::Brightness, g_app.brightness, unitY); return;
        case Slider::None: PressRegion(region); return;
    }
}

void PressRegion(Region region) {
    switch (region) {
        case Region::DayPreset: ApplyPreset(FilterPreset::Day); return;
        case Region::EveningPreset: ApplyPreset(FilterPreset::Evening); return;
        case Region::NightPreset: ApplyPreset(FilterPreset::Night); return;
        case Region::Power: ClickPower(); return;
        case Region::Gear: ClickGear(); return;
        case Region::GammaBanner: StartGammaRangeFix(); return;
        case Region::PwmCard: ClickPwmCard(); return;
        case Region::Close: ClickClose(); return;
        case Region::LaunchRow: ClickLaunchAtStart(); return;
        case Region::ExtremeDimRow: ClickExtremeDim(); return;
        case Region::LegacyRow: ClickLegacyMode(); return;
        case Region::Support: CopySupportBundle(); return;
        case Region::WarmthTrack:
        case Region::BrightnessTrack:
        case Region::None: return;
    }
}

void OnMouseMove(int, int y) {
    if (g_app.dragSlider == Slider::None) return;
    const int distance = g_app.dragStartY - UnscaleForDpi(y);
    MoveSlider(g_app.dragSlider, static_cast<double>(distance) / kSliderTravel + g_app.dragStartValue);
}

void MoveSlider(Slider slider, double value) {
    if (slider == Slider::Warmth) {
        g_app.intensity = std::clamp(value, 0.0, 1.0);
    } else {
        g_app.brightness = ClampBrightness(value, g_app.allowExtremeDim);
    }
    ApplyFilter();
    RefreshPopupAndTray();
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
