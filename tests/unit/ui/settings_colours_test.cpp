// Numbers that the design specifies for the settings panel: edges and colours in the picture.
#include <gtest/gtest.h>

#include <algorithm>

#include "ui/panel_probe.h"

namespace {

constexpr std::uint32_t kBackground = 0x0D0D0D;
constexpr int kRowTops[] = {132, 182, 232};

class SettingsColours : public testing::TestWithParam<std::uint32_t> {};

std::vector<std::string> TextsOf(const char* state, std::uint32_t dpi) {
    return RenderPanel(StateNamed(state), dpi).texts;
}

}  // namespace

TEST_P(SettingsColours, TheHeaderBandEndsAtUnit56WithoutAGear) {
    const Panel1x panel = Render("settings_off", GetParam());
    const int edge = ScaledTo(GetParam(), 56);
    EXPECT_EQ(panel.picture.At(0, edge - 1), 0x191919U);
    EXPECT_EQ(panel.picture.At(panel.picture.width - 1, edge - 1), 0x191919U);
    EXPECT_EQ(panel.picture.At(0, edge), kBackground);
    for (int x = 0; x < 320; ++x)
        EXPECT_EQ(panel.At(x, 30), 0x191919U) << x;
}

TEST_P(SettingsColours, EachRowIsASurfaceInItsOutline) {
    const Panel1x panel = Render("settings_off", GetParam());
    for (const int top : kRowTops) {
        SCOPED_TRACE(top);
        const auto pixel = [&](int x, int y) {
            return panel.picture.At(ScaledTo(GetParam(), x), ScaledTo(GetParam(), y));
        };
        EXPECT_EQ(pixel(160, top), 0x2C2C2CU);
        EXPECT_EQ(pixel(24, top + 21), 0x2C2C2CU);
        EXPECT_EQ(panel.At(160, top + 2), 0x161616U);
        EXPECT_EQ(panel.At(26, top + 21), 0x161616U);
        EXPECT_EQ(panel.At(293, top + 21), 0x161616U);
        EXPECT_EQ(panel.At(160, top + 39), 0x161616U);
        EXPECT_EQ(panel.At(160, top - 2), kBackground);
        EXPECT_EQ(panel.At(160, top + 43), kBackground);
        EXPECT_EQ(panel.At(22, top + 21), kBackground);
        EXPECT_EQ(panel.At(297, top + 21), kBackground);
        EXPECT_EQ(pixel(24, top), kBackground) << "the corner is round";
    }
}

TEST_P(SettingsColours, BetweenTheRowsAndTheButtonTheBackgroundIsEmpty) {
    const Panel1x panel = Render("settings_on", GetParam());
    const int top = ScaledTo(GetParam(), 276);
    const int bottom = ScaledTo(GetParam(), 460);
    int different = 0;
    for (int y = top; y < bottom; ++y) {
        for (int x = 0; x < panel.picture.width; ++x)
            different += panel.picture.At(x, y) == kBackground ? 0 : 1;
    }
    EXPECT_EQ(different, 0);
    EXPECT_EQ(panel.picture.At(0, panel.picture.height - 1), kBackground);
    EXPECT_EQ(panel.At(160, 520), kBackground);
}

TEST_P(SettingsColours, TheSupportButtonTurnsGreenOnceCopied) {
    struct Look {
        const char* state;
        std::uint32_t outline, fill;
    };
    for (const Look& look :
         {Look{"settings_off", 0x0C0C0C, 0x161616}, Look{"settings_copied", 0x0A180E, 0x122416}}) {
        SCOPED_TRACE(look.state);
        const Panel1x panel = Render(look.state, GetParam());
        EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 160), ScaledTo(GetParam(), 462)), look.outline);
        EXPECT_EQ(panel.picture.At(ScaledTo(GetParam(), 24), ScaledTo(GetParam(), 489)), look.outline);
        for (const int y : {464, 489, 513})
            EXPECT_EQ(panel.At(160, y), look.fill) << y;
        EXPECT_EQ(panel.At(27, 489), look.fill);
        EXPECT_EQ(panel.At(293, 489), look.fill);
        EXPECT_EQ(panel.At(22, 489), kBackground);
        EXPECT_EQ(panel.At(297, 489), kBackground);
        EXPECT_EQ(panel.At(160, 460), kBackground);
        EXPECT_EQ(panel.At(160, 517), kBackground);
    }
}

TEST_P(SettingsColours, TheValuesAreWhiteTextsAndNothingElseChangesWithThem) {
    const Rendering off = RenderPanel(StateNamed("settings_off"), GetParam());
    const Rendering on = RenderPanel(StateNamed("settings_on"), GetParam());
    EXPECT_EQ(Difference(on.picture, off.picture), "");
    const auto count = [](const Rendering& rendering, const std::string& text) {
        return std::count(rendering.texts.begin(), rendering.texts.end(), text);
    };
    EXPECT_EQ(count(off, "OFF #FFFFFF"), 3);
    EXPECT_EQ(count(off, "ON #FFFFFF"), 0);
    EXPECT_EQ(count(on, "ON #FFFFFF"), 3);
    EXPECT_EQ(count(on, "OFF #FFFFFF"), 0);
}

TEST_P(SettingsColours, TheTextsAreDrawnInTheOrderOfTheDesign) {
    const std::vector<std::string> rows = {
        "SETTINGS #FFFFFF",          "CLOSE #FF0000", "LAUNCH AT STARTUP #FFFFFF", "OFF #FFFFFF",
        "ALLOW EXTREME DIM #FFFFFF", "OFF #FFFFFF",   "LEGACY MODE #FFFFFF",       "OFF #FFFFFF"};
    std::vector<std::string> plain = rows;
    plain.push_back("COPY FEEDBACK FOR SUPPORT #FFFFFF");
    EXPECT_EQ(TextsOf("settings_off", GetParam()), plain);
    const std::vector<std::string> copied = TextsOf("settings_copied", GetParam());
    ASSERT_EQ(copied.size(), rows.size() + 2);
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), copied.begin()));
    EXPECT_EQ(copied[8], "COPIED #78E696");
    EXPECT_TRUE(copied[9].starts_with("PASTE INTO AN EMAIL TO ") && copied[9].ends_with(" #6EC882"))
        << copied[9];
}

INSTANTIATE_TEST_SUITE_P(At, SettingsColours, testing::ValuesIn(kPictureDpis),
                         [](const testing::TestParamInfo<std::uint32_t>& parameter) {
                             return std::to_string(parameter.param);
                         });

TEST(SettingsRows, At96DpiTheRowsAndTheButtonAreExact) {
    const Picture panel = RenderPanel(StateNamed("settings_off"), 96).picture;
    for (const int top : kRowTops) {
        EXPECT_EQ(panel.At(160, top - 1), kBackground);
        EXPECT_EQ(panel.At(160, top), 0x2C2C2CU);
        EXPECT_EQ(panel.At(160, top + 1), 0x161616U);
        EXPECT_EQ(panel.At(160, top + 40), 0x161616U);
        EXPECT_EQ(panel.At(160, top + 41), 0x2C2C2CU);
        EXPECT_EQ(panel.At(160, top + 42), kBackground);
        EXPECT_EQ(panel.At(23, top + 21), kBackground);
        EXPECT_EQ(panel.At(24, top + 21), 0x2C2C2CU);
        EXPECT_EQ(panel.At(25, top + 21), 0x161616U);
        EXPECT_EQ(panel.At(294, top + 21), 0x161616U);
        EXPECT_EQ(panel.At(295, top + 21), 0x2C2C2CU);
        EXPECT_EQ(panel.At(296, top + 21), kBackground);
    }
    EXPECT_EQ(panel.At(160, 461), kBackground);
    EXPECT_EQ(panel.At(160, 462), 0x0C0C0CU);
    EXPECT_EQ(panel.At(160, 463), 0x161616U);
    EXPECT_EQ(panel.At(160, 514), 0x161616U);
    EXPECT_EQ(panel.At(160, 515), 0x0C0C0CU);
    EXPECT_EQ(panel.At(160, 516), kBackground);
}
