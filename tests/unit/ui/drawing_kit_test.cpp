#include "ui/drawing_kit.h"

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "ui/drawing_test.h"
#include "ui/expected_drawing.h"
#include "ui/gdi_recorder.h"

namespace {

constexpr std::uint32_t kDpis[] = {96, 120, 144, 192, 0};

class DrawingKit : public DrawingTest {
protected:
    HDC dc() const { return ScreenContext(); }
};

}  // namespace

TEST_F(DrawingKit, TextWithoutAnyFontIsStillDrawn) {
    for (HFONT& font : g_app.fonts)
        font = nullptr;
    DrawTextLine(dc(), FontRole::Title, RGB(255, 255, 255), {1, 2, 3, 4}, kAlignLeft, L"A&B");
    EXPECT_EQ(g_gdi.drawn, Drawing{Text("A&B", "default", 0xFFFFFF, {1, 2, 3, 4}, kLeft)});
}

TEST_F(DrawingKit, EachAlignmentIsOneLineOnATransparentBackground) {
    const RECT rect = {10, 20, 30, 40};
    DrawTextLine(dc(), FontRole::Small, 0, rect, kAlignTopLeft, L"a");
    DrawTextLine(dc(), FontRole::Small, 0, rect, kAlignLeft, L"b");
    DrawTextLine(dc(), FontRole::Small, 0, rect, kAlignCentre, L"c");
    DrawTextLine(dc(), FontRole::Small, 0, rect, kAlignRight, L"d");
    DrawTextLine(dc(), FontRole::Small, 0, rect, kAlignTopCentre, L"e");
    const Rect box = {10, 20, 30, 40};
    const Drawing expected = {
        Text("a", "Small", 0, box, "left top"), Text("b", "Small", 0, box, "left middle"),
        Text("c", "Small", 0, box, "centre middle"), Text("d", "Small", 0, box, "right middle"),
        Text("e", "Small", 0, box, "centre top")};
    EXPECT_EQ(g_gdi.drawn, expected);
}

TEST_F(DrawingKit, EdgeLinesLieOneBelowTheTopAndTwoAboveTheBottom) {
    DrawEdgeLines(dc(), {24, 384, 296, 418}, 8, RGB(0x78, 0x78, 0x78), RGB(0, 0, 0));
    const Drawing expected = {Stroke({32, 385, 288, 385}, 1, 0x787878),
                              Stroke({32, 416, 288, 416}, 1, 0x000000)};
    EXPECT_EQ(g_gdi.drawn, expected);
}

TEST_F(DrawingKit, AVerticalGradientIsOneCallWithTheTopColourAtTheTop) {
    FillVerticalGradient(dc(), {24, 479, 296, 527}, RGB(0xCC, 0x12, 0x34), RGB(0x99, 0xAB, 0xFF));
    EXPECT_EQ(g_gdi.drawn, Drawing{Gradient({24, 479, 296, 527}, 0xCC1234, 0x99ABFF)});
}

TEST_F(DrawingKit, ARoundedGradientIsClippedInDevicePixelsAtEveryDpi) {
    for (std::uint32_t dpi : kDpis) {
        SCOPED_TRACE(dpi);
        g_app.dpi = dpi;
        g_gdi.drawn.clear();
        FillRoundedGradient(dc(), {30, 429, 110, 465}, 10, RGB(1, 1, 1), RGB(2, 2, 2));
        EXPECT_EQ(g_gdi.drawn, RoundedGradient({30, 429, 110, 465}, 10, 0x010101, 0x020202, dpi));
    }
}

TEST_F(DrawingKit, TheClipOfARoundedGradientInNumbers) {
    const auto clipAt = [&](std::uint32_t dpi) {
        g_app.dpi = dpi;
        g_gdi.drawn.clear();
        FillRoundedGradient(dc(), {25, 429, 111, 465}, 10, 0, 0);
        return g_gdi.drawn.at(0);
    };
    EXPECT_EQ(clipAt(96), "clip (25,429)-(112,466) ellipse 20x20");
    EXPECT_EQ(clipAt(120), "clip (31,536)-(140,582) ellipse 26x26");
    EXPECT_EQ(clipAt(144), "clip (38,644)-(168,699) ellipse 30x30");
    EXPECT_EQ(clipAt(192), "clip (50,858)-(223,931) ellipse 40x40");
    EXPECT_EQ(clipAt(0), "clip (25,429)-(112,466) ellipse 20x20");
}

TEST_F(DrawingKit, ARoundedGradientRestoresThePreviousClip) {
    SetClipOf(dc(), "what was there");
    FillRoundedGradient(dc(), {0, 0, 10, 10}, 2, 0, 0);
    EXPECT_EQ(ClipOf(dc()), "what was there");
    EXPECT_EQ(g_gdi.drawn.back(), "clip what was there");
    SetClipOf(dc(), "none");
}

TEST_F(DrawingKit, ARoundedGradientWithoutAPreviousClipLeavesNone) {
    FillRoundedGradient(dc(), {0, 0, 10, 10}, 2, 0, 0);
    EXPECT_EQ(ClipOf(dc()), "none");
}

TEST_F(DrawingKit, ARadiusOfLessThanOnePixelBecomesOne) {
    FillRoundedGradient(dc(), {0, 0, 10, 10}, 0, 0, 0);
    EXPECT_EQ(g_gdi.drawn.at(0), "clip (0,0)-(11,11) ellipse 2x2");
    g_app.dpi = 24;  // a quarter: 1 becomes 0
    g_gdi.drawn.clear();
    FillRoundedGradient(dc(), {0, 0, 40, 40}, 1, 0, 0);
    EXPECT_EQ(g_gdi.drawn.at(0), "clip (0,0)-(11,11) ellipse 2x2");
}

TEST_F(DrawingKit, ASolidRoundedRectangleHasACornerOfTwiceItsRadius) {
    FillRoundRect(dc(), 24, 462, 272, 54, 8, RGB(0x12, 0x24, 0x16), RGB(0x0A, 0x18, 0x0E));
    EXPECT_EQ(g_gdi.drawn, Drawing{Round({24, 462, 296, 516}, 16, "1 #0A180E", "#122416")});
}

TEST_F(DrawingKit, AnOutlineColourOfZeroMeansNoOutline) {
    FillRoundRect(dc(), 10, 20, 30, 40, 5, RGB(0x12, 0x24, 0x16), 0);
    EXPECT_EQ(g_gdi.drawn, Drawing{Round({10, 20, 40, 60}, 10, "none", "#122416")});
}

TEST_F(DrawingKit, ABlackFillIsAFill) {
    FillRoundRect(dc(), 0, 0, 8, 8, 2, 0, RGB(1, 1, 1));
    EXPECT_EQ(g_gdi.drawn, Drawing{Round({0, 0, 8, 8}, 4, "1 #010101", "#000000")});
}

TEST_F(DrawingKit, ShapesOfTheCanvasStayInDesignUnitsAtEveryDpi) {
    g_app.dpi = 192;
    FillRoundRect(dc(), 24, 462, 272, 54, 8, RGB(1, 1, 1), RGB(2, 2, 2));
    FillVerticalGradient(dc(), {1, 2, 3, 4}, 0, 0);
    DrawEdgeLines(dc(), {24, 384, 296, 418}, 8, 0, 0);
    const Drawing expected = {Round({24, 462, 296, 516}, 16, "1 #020202", "#010101"),
                              Gradient({1, 2, 3, 4}, 0, 0), Stroke({32, 385, 288, 385}, 1, 0),
                              Stroke({32, 416, 288, 416}, 1, 0)};
    EXPECT_EQ(g_gdi.drawn, expected);
}
