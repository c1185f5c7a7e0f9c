#include "ui/panel_header.h"

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "ui/drawing_test.h"
#include "ui/expected_drawing.h"
#include "ui/fonts.h"
#include "ui/gdi_recorder.h"

namespace {

class PanelHeader : public DrawingTest {};

}  // namespace

TEST_F(PanelHeader, WithGearDrawsBandTitleAndGlyph) {
    DrawPanelHeader(ScreenContext(), L"", RGB(0x66, 0x66, 0x66), true, false);
    const Drawing expected = {Fill({0, 0, 320, 56}, 0x191919),
                              Text("AMBREL", "Title", 0x666666, {22, 20, 180, 40}, kTopLeft),
                              Text("\\ue713", "Glyph", 0x666666, {280, 17, 304, 41}, kCentre)};
    EXPECT_EQ(g_gdi.drawn, expected);
}

TEST_F(PanelHeader, WithDotDrawsItInTheSubtitlesColourWithoutAnOutline) {
    DrawPanelHeader(ScreenContext(), L"Locked", RGB(0x00, 0xD6, 0x7C), false, true);
    const Drawing expected = {Fill({0, 0, 320, 56}, 0x191919),
                              Text("AMBREL", "Title", 0x666666, {22, 20, 180, 40}, kTopLeft),
                              Text("Locked", "Small", 0x00D67C, {42, 36, 250, 52}, kTopLeft),
                              "ellipse (20,38)-(28,46) pen none fill #00D67C"};
    EXPECT_EQ(g_gdi.drawn, expected);
}

TEST_F(PanelHeader, WithBothDrawsTheDotBeforeTheGear) {
    DrawPanelHeader(ScreenContext(), L"x", RGB(1, 2, 3), true, true);
    ASSERT_EQ(g_gdi.drawn.size(), 5U);
    EXPECT_EQ(g_gdi.drawn[3], "ellipse (20,38)-(28,46) pen none fill #010203");
    EXPECT_EQ(g_gdi.drawn[4], Text("\\ue713", "Glyph", 0x666666, {280, 17, 304, 41}, kCentre));
}

TEST_F(PanelHeader, WithNeitherDrawsBandAndTitleOnly) {
    DrawPanelHeader(ScreenContext(), L"", 0, false, false);
    EXPECT_EQ(g_gdi.drawn.size(), 2U);
}

TEST_F(PanelHeader, WithoutItsFontTheGlyphIsDrawnInTheLabelFont) {
    g_app.fonts[static_cast<int>(FontRole::Glyph)] = nullptr;
    DrawPanelHeader(ScreenContext(), L"", 0, true, false);
    EXPECT_EQ(g_gdi.drawn.back(), Text("\\ue713", "Label", 0x666666, {280, 17, 304, 41}, kCentre));
}

TEST_F(PanelHeader, IsDrawnInDesignUnitsAtEveryDpi) {
    g_app.dpi = 192;
    DrawPanelHeader(ScreenContext(), L"", 0, false, false);
    const Drawing expected = {Fill({0, 0, 320, 56}, 0x191919),
                              Text("AMBREL", "Title", 0x666666, {22, 20, 180, 40}, kTopLeft)};
    EXPECT_EQ(g_gdi.drawn, expected);
}
