#include "ui/main_panel.h"

#include <iterator>

#include "app/state/app_state.h"
#include "filter/model/warmth.h"
#include "ui/canvas.h"
#include "ui/drawing_kit.h"
#include "ui/palette.h"
#include "ui/panel_header.h"
#include "ui/panel_texts.h"
#include "ui/power_button.h"
#include "ui/regions.h"
#include "ui/slider.h"
#include "ui/slider_geometry.h"
#include "ui/slider_text.h"
#include "ui/status_strip.h"

namespace {

constexpr int kLowerAreaTop = 374;

struct PresetColours {
    ButtonColours surface;
    COLORREF text;
};

constexpr PresetColours kSelected = {{Hex(0x464646), Hex(0x464646), Hex(0x282828), Hex(0x6E6E6E)},
                                     kColourText};
constexpr PresetColours kUnselected = {{Hex(0x222222), Hex(0x2D2D2D), Hex(0x161616), Hex(0x373737)},
                                       kColourDimmed};

static_assert(std::size(kPresetRegions) == std::size(kPresets));

void DrawSliders(HDC dc) {
    wchar_t kelvin[kSliderTextCapacity];
    FormatSliderText(Slider::Warmth, kelvin);
    DrawVerticalSlider(
        dc, {kWarmthCentreX, g_app.intensity, kColourRed, g_app.filterOn, kWarmthCaption, kelvin, 84});

    wchar_t percent[kSliderTextCapacity];
    FormatSliderText(Slider::Brightness, percent);
    DrawVerticalSlider(dc, {kBrightnessCentreX, g_app.brightness, kColourText, g_app.filterOn,
                            kBrightnessCaption, percent, 64});

    DrawStroke(dc, {160, 117}, {160, 295}, 2, kColourDivider);
}

void DrawLowerArea(HDC dc) {
    FillBox(dc, {0, kLowerAreaTop, kCanvasWidth, kCanvasHeight}, kColourLowerArea);
    DrawStroke(dc, {0, kLowerAreaTop}, {kCanvasWidth, kLowerAreaTop}, 1, kColourBlack);
}

void DrawPresetButton(HDC dc, const RECT& button, const wchar_t* label, const PresetColours& colours) {
    DrawButtonSurface(dc, button, colours.surface);
    DrawTextLine(dc, FontRole::Preset, colours.text, button, kAlignCentre, label);
}

void DrawPresets(HDC dc) {
    const FilterPreset recognised = RecognisePreset(g_app.intensity);
    for (std::size_t i = 0; i < std::size(kPresets); ++i) {
        const bool selected = kPresets[i].preset == recognised;
        DrawPresetButton(dc, RegionRect(kPresetRegions[i]), kPresets[i].label,
                         selected ? kSelected : kUnselected);
    }
}

}  // namespace

void DrawMainPanel(HDC dc) {
    DrawPanelHeader(dc, L"", kColourDimmed, true, false);
    DrawSliders(dc);
    DrawLowerArea(dc);
    DrawStatusStrip(dc);
    DrawPresets(dc);
    DrawPowerButton(dc);
}
