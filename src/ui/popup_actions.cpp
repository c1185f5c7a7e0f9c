#include "ui/popup_actions.h"

#include <algorithm>

#include "app/shell/refresh.h"
#include "app/state/timers.h"
#include "brightness/pwm_safe.h"
#include "filter/filter.h"
#include "filter/gamma_fix.h"
#include "store/autostart.h"
#include "store/settings.h"
#include "ui/support_copy.h"

namespace {

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

void MoveSlider(Slider slider, double value) {
    if (slider == Slider::Warmth) {
        g_app.intensity = std::clamp(value, 0.0, 1.0);
    } else {
        g_app.brightness = ClampBrightness(value, g_app.allowExtremeDim);
    }
    ApplyFilter();
    RefreshPopupAndTray();
}
