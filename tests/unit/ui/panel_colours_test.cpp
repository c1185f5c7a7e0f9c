// Numbers that the design specifies: edges and colours in the picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "app/state/app_state.h"
#include "ui/panel_probe.h"

namespace {

constexpr std::uint32_t kBackground = 0x0D0D0D;

int Channel(std::uint32_t colour, int shift) {
    return static_cast<int>((colour >> shift) & 0xFF);
}

// The gradient's colour `row` units below its top, each channel within `slack`.
void ExpectGradient(std::uint32_t actual, std::uint32_t top, std::uint32_t bottom, double row, int height,
                    int slack = 1) {
    for (int shift : {0, 8, 16}) {
        const double from = Channel(top, shift);
        const double expected = from + (Channel(bottom, shift) - from) * row / height;
        EXPECT_NEAR(Channel(actual, shift), expected, slack) << std::hex << actual << " shift " << shift;
    }
}

class PanelColours : public testing::TestWithParam<std::uint32_t> {};

}  // namespace

TEST_P(PanelColours, ThePictureHasTheScaledSizeOfTheCanvas) {
    const Panel1x panel = Render("off", GetParam());
    EXPECT_EQ(panel.picture.width, ScaledTo(GetParam(), 320));
    EXPECT_EQ(panel.picture.height, ScaledTo(GetParam(), 540));
}

TEST_P(PanelColours, TheHeaderBandEndsAtUnit56) {
    const Panel1x panel = Render("off", GetParam());
    const int edge = ScaledTo(GetParam(), 56);
    for (int x : {0, panel.picture.width / 2, panel.picture.width - 1}) {
        EXPECT_EQ(panel.picture.At(x, 0), 0x191919U);
        EXPECT_EQ(panel.picture.At(x, edge - 1), 0x191919U);
        EXPECT_EQ(panel.picture.At(x, edge), kBackground);
    }
}

TEST_P(PanelColours, TheBackgroundReachesTheLowerAreaWhichReachesTheEdge) {
    const Panel1x panel = Render("off", GetParam());
    EXPECT_EQ(panel.At(5, 372), kBackground);
    EXPECT_EQ(panel.At(5, 376), 0x1A1A1AU);
    EXPECT_EQ(panel.picture.At(0, panel.picture.height - 1), 0x1A1A1AU);
    EXPECT_EQ(panel.picture.At(panel.picture.width - 1, panel.picture.height - 1), 0x1A1A1AU);
}

TEST_P(PanelColours, ABlackLineIsOnTheLowerAreasEdge) {
    const Panel1x panel = Render("off", GetParam());
    const int edge = ScaledTo(GetParam(), 374);
    int black = 0;
    for (int y = edge - 3; y <= edge + 3; ++y) {
        if (panel.picture.At(5, y) == 0) ++black;
    }
    EXPECT_EQ(panel.picture.At(5, edge), 0U);
    EXPECT_GE(black, 1);
    EXPECT_LE(black, 2) << "one unit";
}

TEST_P(PanelColours, TheDividerIsTwoUnitsBetweenTheSliders) {
    const Panel1x panel = Render("off", GetParam());
    const int middle = ScaledTo(GetParam(), 160);
    int wide = 0;
    for (int x = middle - 8; x <= middle + 8; ++x) {
        const std::uint32_t pixel = panel.picture.At(x, ScaledTo(GetParam(), 200));
        EXPECT_TRUE(pixel == 0x1C1C1CU || pixel == kBackground) << std::hex << pixel;
        if (pixel == 0x1C1C1CU) ++wide;
    }
    EXPECT_NEAR(wide, ScaledTo(GetParam(), 2), 1);
    EXPECT_EQ(panel.At(160, 113), kBackground);
    EXPECT_EQ(panel.At(160, 119), 0x1C1C1CU);
    EXPECT_EQ(panel.At(160, 293), 0x1C1C1CU);
    EXPECT_EQ(panel.At(160, 299), kBackground);
}

TEST_P(PanelColours, GrooveAndFillMeetUnderTheThumb) {
    const Panel1x off = Render("off", GetParam());
    EXPECT_EQ(off.At(80, 150), 0x1E1E1EU);
    EXPECT_EQ(off.At(80, 280), 0x282828U);
    EXPECT_EQ(off.At(240, 280), 0x282828U);
    const Panel1x on = Render("on_evening", GetParam());
    EXPECT_EQ(on.At(80, 150), 0x1E1E1EU);
    EXPECT_EQ(on.At(80, 280), 0xFF0000U);
    EXPECT_EQ(on.At(240, 280), 0xFFFFFFU);
    EXPECT_EQ(on.At(74, 150), 0x000000U) << "the bed beside the groove";
    EXPECT_EQ(on.At(86, 280), 0x000000U);
}

TEST_P(PanelColours, TheTicksAreDrawnOnBothSidesOfTheGroove) {
    const Panel1x panel = Render("off", GetParam());
    for (int cx : {80, 240}) {
        for (int x : {cx - 44, cx - 27, cx + 26, cx + 43})
            EXPECT_EQ(panel.At(x, 304), 0x646464U) << x;
        for (int x : {cx - 44, cx - 37, cx + 36, cx + 43})
            EXPECT_EQ(panel.At(x, 286), 0x282828U) << x;
        EXPECT_EQ(panel.At(cx - 33, 286), kBackground) << "a minor tick is short";
        EXPECT_EQ(panel.At(cx - 47, 304), kBackground);
    }
}

// Value 0 in "on_dim": the thumb of WARMTH is at the lower end.
TEST_P(PanelColours, TheThumbIsShadedRowByRow) {
    const Panel1x panel = Render("on_dim", GetParam());
    for (int row = 2; row <= 25; ++row) {
        const auto grey = static_cast<std::uint32_t>(kThumbGreys[row]) * 0x010101U;
        EXPECT_EQ(panel.At(60, 291 + row), grey) << "row " << row;
        EXPECT_EQ(panel.At(99, 291 + row), grey) << "row " << row;
    }
    EXPECT_EQ(panel.At(80, 305), 0xFF0000U) << "the bar in the accent";
    EXPECT_EQ(panel.At(69, 305), 0xFF0000U);
    EXPECT_EQ(panel.At(91, 305), 0xFF0000U);
    EXPECT_NE(panel.At(66, 305), 0xFF0000U);
    EXPECT_NE(panel.At(93, 305), 0xFF0000U);
    EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 54), ScaledTo(GetParam(), 303)), 0x3C3C3CU) << "outline";
}

TEST_P(PanelColours, TheThumbsBarIsGreyWithTheFilterOff) {
    const Panel1x panel = Render("off", GetParam());
    EXPECT_EQ(panel.At(80, 305 - 76), 0x505050U);
    EXPECT_EQ(panel.At(240, 107), 0x505050U);
}

TEST_P(PanelColours, TheValueBoxesAreBlackWithTheirOutlines) {
    const Panel1x panel = Render("off", GetParam());
    EXPECT_EQ(panel.At(80, 342), 0x000000U);
    EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 38), ScaledTo(GetParam(), 342)), 0xA00000U);
    EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 208), ScaledTo(GetParam(), 342)), 0x373737U);
    EXPECT_EQ(panel.At(34, 342), kBackground);
    EXPECT_EQ(panel.At(275, 342), kBackground);
}

TEST_P(PanelColours, PresetSurfacesShadeFromTopToBottom) {
    const Panel1x panel = Render("on_day", GetParam());
    // The first and last row of the surface are under the inner outline.
    ExpectGradient(panel.At(70, 431), 0x464646, 0x282828, 2.5, 36);
    ExpectGradient(panel.At(70, 462), 0x464646, 0x282828, 33.5, 36);
    ExpectGradient(panel.At(160, 431), 0x2D2D2D, 0x161616, 2.5, 36);
    ExpectGradient(panel.At(160, 462), 0x2D2D2D, 0x161616, 33.5, 36);
    ExpectGradient(panel.At(250, 447), 0x2D2D2D, 0x161616, 18.5, 36);
    EXPECT_EQ(panel.At(115, 447), 0x1A1A1AU) << "between the buttons";
}

TEST_P(PanelColours, ThePowerButtonShadesFromTopToBottom) {
    const Panel1x on = Render("on_day", GetParam());
    ExpectGradient(on.At(60, 481), 0xCC0000, 0x990000, 2.5, 48, 2);
    ExpectGradient(on.At(60, 524), 0xCC0000, 0x990000, 45.5, 48, 2);
    const Panel1x off = Render("off", GetParam());
    ExpectGradient(off.At(60, 481), 0x262626, 0x1A1A1A, 2.5, 48);
    ExpectGradient(off.At(60, 524), 0x262626, 0x1A1A1A, 45.5, 48);
}

TEST_P(PanelColours, RoundedCornersLetTheLowerAreaThrough) {
    const Panel1x panel = Render("on_day", GetParam());
    EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 24), ScaledTo(GetParam(), 479)), 0x1A1A1AU);
    EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 296) - 1, ScaledTo(GetParam(), 527) - 1), 0x1A1A1AU);
    EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 30), ScaledTo(GetParam(), 429)), 0x1A1A1AU);
}

TEST_P(PanelColours, TheCardShowsItsAccentAndSurface) {
    struct Look {
        const char* state;
        std::uint32_t accent, top, bottom;
    };
    for (const Look& look : {Look{"card_off_below", 0xFFD200, 0x1C180C, 0x120F08},
                             Look{"card_off_at_100", 0x6E6E6E, 0x161616, 0x0C0C0C},
                             Look{"card_on_locked", 0x00D67C, 0x122016, 0x0A140E},
                             Look{"card_on_waiting", 0xFFD200, 0x1C180C, 0x120F08}}) {
        SCOPED_TRACE(look.state);
        const Panel1x panel = Render(look.state, GetParam());
        EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 24), ScaledTo(GetParam(), 401)), look.accent);
        EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 160), ScaledTo(GetParam(), 384)), look.accent);
        ExpectGradient(panel.At(30, 388), look.top, look.bottom, 4.5, 34);
        ExpectGradient(panel.At(30, 412), look.top, look.bottom, 28.5, 34);
    }
}

TEST_P(PanelColours, TheHintDoesNotDrawTheStripsSurface) {
    const Panel1x panel = Render("off", GetParam());
    for (int x : {24, 160, 295}) {
        for (int y : {384, 400, 417})
            EXPECT_EQ(panel.At(x, y), 0x1A1A1AU) << x << "," << y;
    }
}

TEST_P(PanelColours, StatesThatDifferOnlyInTextsDrawTheirTexts) {
    const auto says = [&](const char* state, const std::string& text) {
        const auto texts = RenderPanel(StateNamed(state), GetParam()).texts;
        return std::count(texts.begin(), texts.end(), text) == 1;
    };
    EXPECT_TRUE(says("banner_click", "! COLORS BLOCKED BY WINDOWS. CLICK TO FIX #FF0000"));
    EXPECT_TRUE(says("banner_restart", "! FIX APPLIED. RESTART YOUR COMPUTER #FF0000"));
    EXPECT_TRUE(says("off", "! FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100% #1E1E1E"));
    EXPECT_TRUE(says("on_dim", "! FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100% #FFD200"));
    EXPECT_TRUE(says("card_on_locked", "DISPLAY LOCKED AT 100% #00D67C"));
    EXPECT_TRUE(says("card_on_waiting", "REASSERTING 100% LOCK #FFD200"));
    EXPECT_TRUE(says("card_off_below", "LOCK DISPLAY AT 100% #FFD200"));
    EXPECT_TRUE(says("card_off_at_100", "DISPLAY ALREADY AT 100% #6E6E6E"));
}

INSTANTIATE_TEST_SUITE_P(At, PanelColours, testing::ValuesIn(kPictureDpis),
                         [](const testing::TestParamInfo<std::uint32_t>& parameter) {
                             return std::to_string(parameter.param);
                         });

TEST(PanelRows, At96DpiTheRowsOfTheButtonsAreExact) {
    const Picture on = RenderPanel(StateNamed("on_day"), 96).picture;
    EXPECT_EQ(on.At(70, 427), 0x1A1A1AU);
    EXPECT_EQ(on.At(70, 428), 0x464646U) << "ring";
    EXPECT_EQ(on.At(70, 429), 0x6E6E6EU) << "inner outline";
    EXPECT_EQ(on.At(70, 464), 0x6E6E6EU);
    EXPECT_EQ(on.At(70, 465), 0x464646U);
    EXPECT_EQ(on.At(70, 466), 0x1A1A1AU);
    EXPECT_EQ(on.At(160, 428), 0x222222U);
    EXPECT_EQ(on.At(160, 429), 0x373737U);
    EXPECT_EQ(on.At(160, 477), 0x1A1A1AU);
    EXPECT_EQ(on.At(160, 478), 0x780000U);
    EXPECT_EQ(on.At(160, 479), 0x500000U);
    EXPECT_EQ(on.At(160, 526), 0x500000U);
    EXPECT_EQ(on.At(160, 527), 0x780000U);
    EXPECT_EQ(on.At(160, 528), 0x1A1A1AU);
    const Picture off = RenderPanel(StateNamed("off"), 96).picture;
    EXPECT_EQ(off.At(160, 478), 0x222222U);
    EXPECT_EQ(off.At(160, 479), 0x2D2D2DU);
}

TEST(PanelRows, At96DpiTheCardsBevelIsInsideItsOutline) {
    const Picture on = RenderPanel(StateNamed("card_on_locked"), 96).picture;
    EXPECT_EQ(on.At(160, 384), 0x00D67CU);
    EXPECT_EQ(on.At(160, 385), 0x787878U);
    EXPECT_EQ(on.At(160, 416), 0x000000U);
    EXPECT_EQ(on.At(160, 417), 0x00D67CU);
    EXPECT_EQ(on.At(32, 385), 0x787878U);
    EXPECT_EQ(on.At(287, 385), 0x787878U);
    EXPECT_NE(on.At(288, 385), 0x787878U);
    const Picture off = RenderPanel(StateNamed("card_off_at_100"), 96).picture;
    EXPECT_EQ(off.At(160, 385), 0x505050U);
}

TEST(PanelRows, At96DpiTheSlidersRowsAreExact) {
    const Picture panel = RenderPanel(StateNamed("on_dim"), 96).picture;
    for (int row = 2; row < 26; ++row) {
        EXPECT_EQ(panel.At(58, 291 + row), static_cast<std::uint32_t>(kThumbGreys[row]) * 0x010101U) << row;
    }
    EXPECT_EQ(panel.At(80, 303), static_cast<std::uint32_t>(kThumbGreys[12]) * 0x010101U);
    for (int y : {304, 305, 306})
        EXPECT_EQ(panel.At(80, y), 0xFF0000U);
    EXPECT_EQ(panel.At(80, 307), static_cast<std::uint32_t>(kThumbGreys[16]) * 0x010101U);
    EXPECT_EQ(panel.At(67, 305), static_cast<std::uint32_t>(kThumbGreys[14]) * 0x010101U);
    EXPECT_EQ(panel.At(68, 305), 0xFF0000U);
    EXPECT_EQ(panel.At(91, 305), 0xFF0000U);
    EXPECT_EQ(panel.At(92, 305), static_cast<std::uint32_t>(kThumbGreys[14]) * 0x010101U);
    EXPECT_EQ(panel.At(80, 291), 0x3C3C3CU);
    EXPECT_EQ(panel.At(80, 318), 0x3C3C3CU);
    EXPECT_EQ(panel.At(54, 305), 0x3C3C3CU);
    EXPECT_EQ(panel.At(105, 305), 0x3C3C3CU);
    EXPECT_EQ(panel.At(106, 302), kBackground);
    EXPECT_EQ(panel.At(80, 290), 0x1E1E1EU) << "value 0: no fill above the thumb";
}

TEST(PanelRows, AnEmptyClientAreaDoesNotCrash) {
    PaintWithoutSize();
    EXPECT_EQ(RenderPanel(StateNamed("off"), 96).picture.At(5, 5), 0x191919U)
        << "and the next frame is whole";
}
