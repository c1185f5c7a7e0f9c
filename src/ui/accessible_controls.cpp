#include "ui/accessible_controls.h"

#include <iterator>

#include "app/state/program_names.h"
#include "filter/gamma_banner.h"
#include "filter/model/warmth.h"
#include "ui/panel_texts.h"
#include "ui/pwm_card_label.h"
#include "ui/settings_rows.h"
#include "ui/slider_geometry.h"
#include "ui/slider_text.h"
#include "ui/strip_content.h"
#include "ui/support_copy.h"

#include <oleacc.h>

namespace {

constexpr wchar_t kPress[] = L"Press";
constexpr wchar_t kCheck[] = L"Check";
constexpr wchar_t kUncheck[] = L"Uncheck";

ShownControl Text(const RECT& rect, const wchar_t* text) {
    ShownControl control;
    control.rect = rect;
    control.facts.role = ROLE_SYSTEM_STATICTEXT;
    control.facts.state = STATE_SYSTEM_READONLY;
    control.facts.name = text;
    return control;
}

ShownControl Clickable(Region region, DWORD role, const wchar_t* name) {
    ShownControl control;
    control.region = region;
    control.rect = RegionRect(region);
    control.facts.role = role;
    control.facts.name = name;
    return control;
}

ShownControl Button(Region region, const wchar_t* name) {
    ShownControl control = Clickable(region, ROLE_SYSTEM_PUSHBUTTON, name);
    control.action = kPress;
    return control;
}

ShownControl CheckButton(Region region, const wchar_t* name, bool checked) {
    ShownControl control = Clickable(region, ROLE_SYSTEM_CHECKBUTTON, name);
    if (checked) control.facts.state = STATE_SYSTEM_CHECKED;
    control.action = checked ? kUncheck : kCheck;
    return control;
}

ShownControl RadioButton(Region region, const wchar_t* name, bool checked) {
    ShownControl control = Clickable(region, ROLE_SYSTEM_RADIOBUTTON, name);
    if (checked) control.facts.state = STATE_SYSTEM_CHECKED;
    control.action = kCheck;
    return control;
}

ShownControl SliderControl(Region region, const wchar_t* name) {
    ShownControl control = Clickable(region, ROLE_SYSTEM_SLIDER, name);
    FormatSliderText(SliderOf(region), control.facts.value);
    return control;
}

ShownControl Hint() {
    ShownControl control = Text(kHintRect, kHintText);
    if (IsHintLit()) {
        control.facts.role = ROLE_SYSTEM_ALERT;
        control.facts.state |= STATE_SYSTEM_ALERT_MEDIUM;
    }
    return control;
}

ShownControl Strip() {
    LogBannerDemotionOnce();
    switch (CurrentStripContent()) {
        case StripContent::Banner: return Button(Region::GammaBanner, BannerText());
        case StripContent::Card: {
            ShownControl card = CheckButton(Region::PwmCard, kCardTitle, g_app.pwmSafe);
            card.facts.description = PwmCardLabel();
            return card;
        }
        case StripContent::Hint: return Hint();
    }
    return Hint();
}

ShownControl SupportButton() {
    if (!ShowsCopied()) return Button(Region::Support, kSupportLabel);
    ShownControl button = Button(Region::Support, kCopiedLabel);
    button.facts.description = kCopiedHint;
    return button;
}

void Append(ShownPanel* panel, const ShownControl& control) {
    if (panel->count < kMaxShownControls) panel->controls[panel->count++] = control;
}

void AppendMainPanel(ShownPanel* panel) {
    Append(panel, Text(kMainTitleRect, kMainTitle));
    Append(panel, Button(Region::Gear, kSettingsTitle));
    Append(panel, Text(SliderCaptionRect(kWarmthCentreX), kWarmthCaption));
    Append(panel, SliderControl(Region::WarmthTrack, kWarmthCaption));
    Append(panel, Text(SliderCaptionRect(kBrightnessCentreX), kBrightnessCaption));
    Append(panel, SliderControl(Region::BrightnessTrack, kBrightnessCaption));
    Append(panel, Strip());
    const FilterPreset recognised = RecognisePreset(g_app.intensity);
    for (std::size_t i = 0; i < std::size(kPresets); ++i) {
        const PresetRow& row = kPresets[i];
        Append(panel, RadioButton(kPresetRegions[i], row.label, row.preset == recognised));
    }
    Append(panel, CheckButton(Region::Power, kPowerLabel, g_app.filterOn));
}

void AppendSettingsPanel(ShownPanel* panel) {
    Append(panel, Text(kSettingsTitleRect, kSettingsTitle));
    Append(panel, Button(Region::Close, kCloseLabel));
    for (const SettingsRow& row : kSettingsRows)
        Append(panel, CheckButton(row.region, row.label, g_app.*row.value));
    Append(panel, SupportButton());
}

}  // namespace

ShownPanel ReadShownPanel() {
    ShownPanel panel;
    if (g_app.panel == Panel::Settings) {
        AppendSettingsPanel(&panel);
    } else {
        AppendMainPanel(&panel);
    }
    return panel;
}

ShownControl ReadShownPopup() {
    ShownControl popup;
    popup.rect = {0, 0, kCanvasWidth, kCanvasHeight};
    popup.facts.role = ROLE_SYSTEM_CLIENT;
    popup.facts.name = kProgramTitle;
    return popup;
}
