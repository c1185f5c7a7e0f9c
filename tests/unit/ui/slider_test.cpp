#include "ui/slider.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "app/state/app_state.h"
#include "ui/drawing_test.h"
#include "ui/expected_drawing.h"
#include "ui/gdi_recorder.h"

namespace {

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kWhite = RGB(255, 255, 255);

class SliderControl : public DrawingTest {
protected:
    static Drawing Draw(double value, bool active = true) {
        g_gdi.drawn.clear();
        DrawVerticalSlider(ScreenContext(), {80, value, kRed, active, L"WARMTH", L"4,000K", 84});
        return g_gdi.drawn;
    }

    static bool Has(const Drawing& drawing, const std::string& line) {
        return std::find(drawing.begin(), drawing.end(), line) != drawing.end();
    }
};

}  // namespace

TEST_F(SliderControl, TheGreysOfTheThumbAreComputedInSinglePrecision) {
    for (int row = 0; row < 28; ++row)
        EXPECT_EQ(ThumbGrey(row), kThumbGreys[row]) << "row " << row;
}

TEST_F(SliderControl, TheGreysAgreeWithTheirThreeRamps) {
    for (int row = 0; row < 28; ++row) {
        const double t = row / 28.0;
        const double grey = t < 0.3   ? 89 + (56 - 89) * t / 0.3
                            : t < 0.7 ? 56 + (46 - 56) * (t - 0.3) / 0.4
                                      : 46 + (64 - 46) * (t - 0.7) / 0.3;
        EXPECT_NEAR(kThumbGreys[row] + 0.5, grey, 0.50001) << "row " << row;
    }
}

TEST_F(SliderControl, ARedSliderIsDrawnPieceByPieceInOrder) {
    const Drawing expected = SliderDrawing({80, 0.385, true, true, "WARMTH", "4,000K", 84}, 96);
    EXPECT_EQ(Draw(0.385), expected);
}

TEST_F(SliderControl, AnInactiveSliderIsGreyButKeepsItsCaptionsColour) {
    const Drawing drawing = Draw(0.5, false);
    EXPECT_EQ(drawing, SliderDrawing({80, 0.5, true, false, "WARMTH", "4,000K", 84}, 96));
    EXPECT_TRUE(Has(drawing, Fill({76, 206, 84, 305}, 0x282828)));
    EXPECT_TRUE(Has(drawing, Fill({68, 205, 92, 208}, 0x505050)));
    EXPECT_TRUE(Has(drawing, Text("WARMTH", "Caption", 0xFF0000, {10, 65, 150, 87}, kCentre)));
}

TEST_F(SliderControl, AWhiteSliderHasWhiteTextAndAGreyBox) {
    DrawVerticalSlider(ScreenContext(), {240, 0.85, kWhite, true, L"BRIGHTNESS", L"85%", 64});
    EXPECT_EQ(g_gdi.drawn, SliderDrawing({240, 0.85, false, true, "BRIGHTNESS", "85%", 64}, 96));
    EXPECT_TRUE(Has(g_gdi.drawn, Round({208, 330, 272, 354}, 8, "1 #373737", "#000000")));
    EXPECT_TRUE(Has(g_gdi.drawn, Text("85%", "Value", 0xFFFFFF, {208, 330, 272, 354}, kCentre)));
}

TEST_F(SliderControl, OnlyPureRedIsRed) {
    DrawVerticalSlider(ScreenContext(), {80, 0.5, RGB(254, 0, 0), true, L"X", L"Y", 84});
    EXPECT_TRUE(Has(g_gdi.drawn, Text("X", "Caption", 0xFFFFFF, {10, 65, 150, 87}, kCentre)));
    EXPECT_TRUE(Has(g_gdi.drawn, Round({38, 330, 122, 354}, 8, "1 #373737", "#000000")));
    EXPECT_TRUE(Has(g_gdi.drawn, Fill({76, 206, 84, 305}, 0xFE0000)));
}

TEST_F(SliderControl, OnlyTheThumbsClipFollowsTheDpi) {
    for (std::uint32_t dpi : {96U, 120U, 144U, 192U, 0U}) {
        g_app.dpi = dpi;
        EXPECT_EQ(Draw(0.3), SliderDrawing({80, 0.3, true, true, "WARMTH", "4,000K", 84}, dpi)) << dpi;
    }
}

TEST_F(SliderControl, TheThumbsClipInNumbers) {
    g_app.dpi = 120;
    EXPECT_TRUE(Has(Draw(0.0), "clip (68,364)-(134,400) ellipse 10x10"));
    g_app.dpi = 144;
    EXPECT_TRUE(Has(Draw(0.0), "clip (81,437)-(160,480) ellipse 12x12"));
    g_app.dpi = 192;
    EXPECT_TRUE(Has(Draw(0.0), "clip (108,582)-(213,639) ellipse 16x16"));
}

TEST_F(SliderControl, AtZeroTheBarIsAtTheLowerEndAndNothingIsFilled) {
    const Drawing drawing = Draw(0.0);
    EXPECT_EQ(drawing, SliderDrawing({80, 0.0, true, true, "WARMTH", "4,000K", 84}, 96));
    EXPECT_TRUE(Has(drawing, Fill({68, 304, 92, 307}, 0xFF0000)));
    EXPECT_TRUE(Has(drawing, Outline({54, 291, 106, 319}, 8, 0x3C3C3C)));
    const auto fills = std::count_if(drawing.begin(), drawing.end(), [](const std::string& line) {
        return line.find("#FF0000") != std::string::npos && line.rfind("fill", 0) == 0;
    });
    EXPECT_EQ(fills, 1) << "the bar only";
}

TEST_F(SliderControl, AtOneTheBarIsAtTheUpperEndAndTheWholeGrooveIsFilled) {
    const Drawing drawing = Draw(1.0);
    EXPECT_EQ(drawing, SliderDrawing({80, 1.0, true, true, "WARMTH", "4,000K", 84}, 96));
    EXPECT_TRUE(Has(drawing, Fill({68, 106, 92, 109}, 0xFF0000)));
    EXPECT_TRUE(Has(drawing, Fill({76, 107, 84, 305}, 0xFF0000)));
}

TEST_F(SliderControl, TheOffsetOfAValueIsTruncated) {
    EXPECT_TRUE(Has(Draw(1.0 / 198.0 - 1e-9), Fill({68, 304, 92, 307}, 0xFF0000)));
    EXPECT_TRUE(Has(Draw(1.0 / 198.0 + 1e-9), Fill({68, 303, 92, 306}, 0xFF0000)));
    EXPECT_TRUE(Has(Draw(0.999999), Fill({68, 107, 92, 110}, 0xFF0000)));
}

TEST_F(SliderControl, TheTicksAreElevenOnEachSide) {
    const Drawing drawing = Draw(0.5);
    EXPECT_TRUE(Has(drawing, Fill({35, 304, 55, 306}, 0x646464)));
    EXPECT_TRUE(Has(drawing, Fill({105, 304, 125, 306}, 0x646464)));
    EXPECT_TRUE(Has(drawing, Fill({35, 205, 55, 207}, 0x646464)));
    EXPECT_TRUE(Has(drawing, Fill({35, 106, 55, 108}, 0x646464)));
    EXPECT_TRUE(Has(drawing, Fill({35, 286, 45, 287}, 0x282828)));
    EXPECT_TRUE(Has(drawing, Fill({115, 286, 125, 287}, 0x282828)));
    EXPECT_TRUE(Has(drawing, Fill({35, 246, 45, 247}, 0x282828)));
    EXPECT_TRUE(Has(drawing, Fill({35, 127, 45, 128}, 0x282828)));
}

TEST_F(SliderControl, AnOddBoxWidthRoundsTheBoxToTheRight) {
    DrawVerticalSlider(ScreenContext(), {80, 0.5, kRed, true, L"X", L"Y", 65});
    EXPECT_TRUE(Has(g_gdi.drawn, Round({48, 330, 113, 354}, 8, "1 #A00000", "#000000")));
}

TEST_F(SliderControl, WithoutItsFontTheCaptionIsDrawnInTheSmallOne) {
    g_app.fonts[1] = nullptr;
    EXPECT_TRUE(Has(Draw(0.5), Text("WARMTH", "Small", 0xFF0000, {10, 65, 150, 87}, kCentre)));
}
