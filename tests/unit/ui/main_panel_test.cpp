#include "ui/main_panel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "app/state/app_state.h"
#include "ui/drawing_test.h"
#include "ui/expected_drawing.h"
#include "ui/gdi_recorder.h"
#include "ui/power_button.h"

namespace {

struct Look {
    std::string kelvin;
    std::string percent;
    int selected;  // 0 DAY, 1 EVENING, 2 NIGHT, -1 none
    std::uint32_t hint;
};

Drawing PresetDrawing(int index, bool selected, std::uint32_t dpi) {
    static constexpr Rect rects[] = {{30, 429, 110, 465}, {120, 429, 200, 465}, {210, 429, 290, 465}};
    static constexpr const char* names[] = {"DAY", "EVENING", "NIGHT"};
    const Rect rect = rects[index];
    const Rect ring = {rect.left - 1, rect.top - 1, rect.right + 1, rect.bottom + 1};
    return Drawing{Outline(ring, 22, selected ? 0x464646 : 0x222222)} +
           RoundedGradient(rect, 10, selected ? 0x464646 : 0x2D2D2D, selected ? 0x282828 : 0x161616, dpi) +
           Drawing{Outline(rect, 20, selected ? 0x6E6E6E : 0x373737),
                   Text(names[index], "Preset", selected ? 0xFFFFFF : 0x666666, rect, kCentre)};
}

Drawing PowerSurface(bool on, std::uint32_t dpi) {
    const Rect rect = {24, 479, 296, 527};
    return Drawing{Outline({23, 478, 297, 528}, 22, on ? 0x780000 : 0x222222)} +
           RoundedGradient(rect, 10, on ? 0xCC0000 : 0x262626, on ? 0x990000 : 0x1A1A1A, dpi) +
           Drawing{Outline(rect, 20, on ? 0x500000 : 0x2D2D2D)};
}

const std::string kMeasure = "measure \"KIVO\" Toggle";

std::string Word(int left, int width) {
    return Text("KIVO", "Toggle", 0xFFFFFF, {left, 479, left + width + 6, 527}, kLeft);
}

// The complete panel with the hint in its strip and no icon; every text is measured as 50 units wide.
Drawing PanelDrawing(const Look& look, std::uint32_t dpi = 96) {
    const bool on = g_app.filterOn;
    Drawing panel = {Fill({0, 0, 320, 56}, 0x191919),
                     Text("AMBREL", "Title", 0x666666, {22, 20, 180, 40}, kTopLeft),
                     Text("\\ue713", "Glyph", 0x666666, {280, 17, 304, 41}, kCentre)};
    panel = panel + SliderDrawing({80, g_app.intensity, true, on, "WARMTH", look.kelvin, 84}, dpi) +
            SliderDrawing({240, g_app.brightness, false, on, "BRIGHTNESS", look.percent, 64}, dpi) +
            Drawing{Stroke({160, 117, 160, 295}, 2, 0x1C1C1C), Fill({0, 374, 320, 540}, 0x1A1A1A),
                    Stroke({0, 374, 320, 374}, 1, 0x000000),
                    Text("\\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%", "Small", look.hint,
                         {22, 385, 298, 405}, kTopCentre)};
    for (int i = 0; i < 3; ++i)
        panel = panel + PresetDrawing(i, i == look.selected, dpi);
    // (272 - 50) / 2 = 111
    return panel + PowerSurface(on, dpi) + Drawing{kMeasure, Word(135, 50)};
}

class MainPanelDrawing : public DrawingTest {
protected:
    static Drawing Drawn() {
        g_gdi.drawn.clear();
        DrawMainPanel(ScreenContext());
        return g_gdi.drawn;
    }

    static bool Has(const Drawing& drawing, const std::string& line) {
        return std::find(drawing.begin(), drawing.end(), line) != drawing.end();
    }

    static void ExpectKelvin(double intensity, const std::string& label) {
        g_app.intensity = intensity;
        EXPECT_TRUE(Has(Drawn(), Text(label, "Value", 0xFF0000, {38, 330, 122, 354}, kCentre)))
            << "intensity " << intensity << " is not " << label;
    }

    static void ExpectPercent(double brightness, const std::string& label) {
        g_app.brightness = brightness;
        EXPECT_TRUE(Has(Drawn(), Text(label, "Value", 0xFFFFFF, {208, 330, 272, 354}, kCentre)))
            << "brightness " << brightness << " is not " << label;
    }

    // Which preset buttons are drawn as selected.
    static std::string Selected(double intensity) {
        g_app.intensity = intensity;
        const Drawing drawing = Drawn();
        std::string selected;
        for (int i = 0; i < 3; ++i) {
            const Drawing on = PresetDrawing(i, true, 96);
            if (std::search(drawing.begin(), drawing.end(), on.begin(), on.end()) != drawing.end()) {
                selected += "DEN"[i];
            }
        }
        return selected;
    }
};

}  // namespace

TEST_F(MainPanelDrawing, AfterTheStartTheFilterIsOffAndDayIsSelected) {
    EXPECT_EQ(Drawn(), PanelDrawing({"3,998K", "100%", 0, 0x1E1E1E}));
}

TEST_F(MainPanelDrawing, TheFilterOnAtEachPreset) {
    g_app.filterOn = true;
    g_app.intensity = 0.3846153846153846;
    EXPECT_EQ(Drawn(), PanelDrawing({"4,000K", "100%", 0, 0x1E1E1E}));
    g_app.intensity = 0.5846153846153845;
    g_app.brightness = 0.85;
    EXPECT_EQ(Drawn(), PanelDrawing({"2,700K", "85%", 1, 0xFFD200}));
    g_app.intensity = 1.0;
    g_app.brightness = 0.7;
    EXPECT_EQ(Drawn(), PanelDrawing({"0K", "70%", 2, 0xFFD200}));
}

TEST_F(MainPanelDrawing, TheFilterOffAtEachPresetIsGreyWithColouredCaptions) {
    g_app.intensity = 0.5846153846153845;
    g_app.brightness = 0.85;
    EXPECT_EQ(Drawn(), PanelDrawing({"2,700K", "85%", 1, 0xFFD200}));
    g_app.intensity = 1.0;
    EXPECT_EQ(Drawn(), PanelDrawing({"0K", "85%", 2, 0xFFD200}));
}

TEST_F(MainPanelDrawing, BetweenThePresetsNoneIsSelected) {
    g_app.filterOn = true;
    g_app.intensity = 0.5;
    EXPECT_EQ(Drawn(), PanelDrawing({"3,250K", "100%", -1, 0x1E1E1E}));
}

TEST_F(MainPanelDrawing, OnlyClipsFollowTheDpi) {
    for (std::uint32_t dpi : {96U, 120U, 144U, 192U, 0U}) {
        g_app.dpi = dpi;
        EXPECT_EQ(Drawn(), PanelDrawing({"3,998K", "100%", 0, 0x1E1E1E}, dpi)) << dpi;
    }
}

TEST_F(MainPanelDrawing, TheTemperatureIsRoundedHalfAwayFromZero) {
    ExpectKelvin(1.0, "0K");
    ExpectKelvin(0.9995, "3K");
    ExpectKelvin(0.875, "813K");    // 812.5
    ExpectKelvin(0.625, "2,438K");  // 2437.5
    ExpectKelvin(0.0, "6,500K");
}

TEST_F(MainPanelDrawing, FromAThousandKelvinTheLabelHasAComma) {
    ExpectKelvin(1.0 - 1000.0 / 6500.0, "1,000K");
    ExpectKelvin(1.0 - 999.0 / 6500.0, "999K");
    ExpectKelvin(1.0 - 999.4 / 6500.0, "999K");
    ExpectKelvin(1.0 - 999.6 / 6500.0, "1,000K");
    ExpectKelvin(1.0 - 2005.0 / 6500.0, "2,005K");
    ExpectKelvin(1.0 - 5050.0 / 6500.0, "5,050K");
}

TEST_F(MainPanelDrawing, TheTemperatureClampsTheIntensityTheSliderDoesNot) {
    g_app.intensity = 1.5;
    EXPECT_TRUE(Has(Drawn(), Text("0K", "Value", 0xFF0000, {38, 330, 122, 354}, kCentre)));
    EXPECT_TRUE(Has(Drawn(), Fill({68, 7, 92, 10}, 0x505050))) << "297 units above the lower end";
    g_app.intensity = -0.5;
    EXPECT_TRUE(Has(Drawn(), Text("6,500K", "Value", 0xFF0000, {38, 330, 122, 354}, kCentre)));
}

TEST_F(MainPanelDrawing, ThePercentIsTruncated) {
    ExpectPercent(1.0, "100%");
    ExpectPercent(0.999, "99%");
    ExpectPercent(0.57, "56%");
    ExpectPercent(0.29, "28%");
    ExpectPercent(0.1, "10%");
    ExpectPercent(0.009, "0%");
    ExpectPercent(0.0, "0%");
}

TEST_F(MainPanelDrawing, APresetIsSelectedWithinTwoHundredthsOfItsIntensity) {
    EXPECT_EQ(Selected(0.385), "D");
    EXPECT_EQ(Selected(0.3846153846153846 - 0.0199), "D");
    EXPECT_EQ(Selected(0.3846153846153846 + 0.0199), "D");
    EXPECT_EQ(Selected(0.3846153846153846 - 0.0201), "");
    EXPECT_EQ(Selected(0.3846153846153846 + 0.0201), "");
    EXPECT_EQ(Selected(0.57), "E");
    EXPECT_EQ(Selected(0.5646), "");
    EXPECT_EQ(Selected(0.6045), "E");
    EXPECT_EQ(Selected(0.6047), "");
    EXPECT_EQ(Selected(0.9801), "N");
    EXPECT_EQ(Selected(0.98), "") << "the difference is 0.02 and a little";
    EXPECT_EQ(Selected(1.0), "N");
    EXPECT_EQ(Selected(0.0), "");
}

TEST_F(MainPanelDrawing, BrightnessDoesNotDecideWhichPresetIsSelected) {
    g_app.brightness = 0.1;
    EXPECT_EQ(Selected(0.39), "D");
    g_app.brightness = 1.0;
    EXPECT_EQ(Selected(1.0), "N");
}

TEST_F(MainPanelDrawing, TheStripIsBetweenTheLowerAreaAndThePresets) {
    g_app.pwmTargetsPresent = true;
    const Drawing drawing = Drawn();
    const auto at = [&](const std::string& line) {
        return std::find(drawing.begin(), drawing.end(), line) - drawing.begin();
    };
    EXPECT_LT(at(Stroke({0, 374, 320, 374}, 1, 0x000000)), at(Outline({24, 384, 296, 418}, 16, 0x6E6E6E)));
    EXPECT_LT(at(Outline({24, 384, 296, 418}, 16, 0x6E6E6E)), at(Outline({29, 428, 111, 466}, 22, 0x464646)));
    EXPECT_FALSE(Has(drawing, Text("\\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%", "Small",
                                   0x1E1E1E, {22, 385, 298, 405}, kTopCentre)));
}

TEST_F(MainPanelDrawing, ThePowerButtonsIconAndWordAreCentredAsAGroup) {
    g_app.headerIcon = NamedIcon("103");
    DrawPowerButton(ScreenContext());
    // (242 - 50) / 2 = 96
    EXPECT_EQ(g_gdi.drawn,
              (PowerSurface(false, 96) + Drawing{kMeasure, "icon 103 (120,492) 22x22", Word(150, 50)}));
}

TEST_F(MainPanelDrawing, ThePowerButtonIsRedWhenTheFilterIsOn) {
    g_app.filterOn = true;
    g_app.headerIcon = NamedIcon("103");
    DrawPowerButton(ScreenContext());
    EXPECT_EQ(g_gdi.drawn,
              (PowerSurface(true, 96) + Drawing{kMeasure, "icon 103 (120,492) 22x22", Word(150, 50)}));
}

TEST_F(MainPanelDrawing, HalvesOfThePowerButtonsGroupAreTruncated) {
    g_gdi.textWidth = 47;
    DrawPowerButton(ScreenContext());
    EXPECT_EQ(g_gdi.drawn.back(), Word(136, 47)) << "(272 - 47) / 2 = 112";
    g_app.headerIcon = NamedIcon("103");
    DrawPowerButton(ScreenContext());
    EXPECT_EQ(g_gdi.drawn.back(), Word(151, 47)) << "(242 - 47) / 2 = 97";
    EXPECT_EQ(g_gdi.drawn[g_gdi.drawn.size() - 2], "icon 103 (121,492) 22x22");
}

TEST_F(MainPanelDrawing, WithoutThePresetFontTheLabelFontIsUsed) {
    g_app.fonts[5] = nullptr;
    EXPECT_TRUE(Has(Drawn(), Text("NIGHT", "Label", 0x666666, {210, 429, 290, 465}, kCentre)));
}
