#include "ui/settings_panel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "support/call_record.h"
#include "support/fake_clock.h"
#include "ui/drawing_test.h"
#include "ui/expected_drawing.h"
#include "ui/gdi_recorder.h"

namespace {

constexpr Rect kSupportBox = {24, 462, 296, 516};
constexpr Rect kRows[] = {{24, 132, 296, 174}, {24, 182, 296, 224}, {24, 232, 296, 274}};

std::string RowBox(int row) {
    return Round(kRows[row], 12, "1 #2C2C2C", "#161616");
}

Drawing RowTexts(int row, const std::string& label, const std::string& value) {
    const Rect& box = kRows[row];
    return {Text(label, "Label", 0xFFFFFF, {36, box.top, 226, box.bottom}, kLeft),
            Text(value, "Label", 0xFFFFFF, {226, box.top, 284, box.bottom}, kRight)};
}

const Drawing kHeaderTexts = {Text("SETTINGS", "Title", 0xFFFFFF, {22, 0, 240, 56}, kLeft),
                              Text("CLOSE", "Small", 0xFF0000, {252, 18, 300, 42}, kCentre)};
const Drawing kButtonTexts = {Text("COPY FEEDBACK FOR SUPPORT", "Label", 0xFFFFFF, kSupportBox, kCentre)};
const Drawing kCopiedTexts = {Text("COPIED", "Label", 0x78E696, {36, 468, 284, 490}, kLeft),
                              Text("PASTE INTO AN EMAIL TO " + Narrow(AMBREL_SUPPORT_ADDRESS_CAPITALS),
                                   "Small", 0x6EC882, {36, 490, 284, 510}, kLeft)};

const std::string kButtonSurface = Round(kSupportBox, 16, "1 #0C0C0C", "#161616");
const std::string kCopiedSurface = Round(kSupportBox, 16, "1 #0A180E", "#122416");

Drawing Surfaces(const std::string& button) {
    return {Fill({0, 0, 320, 56}, 0x191919), RowBox(0), RowBox(1), RowBox(2), button};
}

Drawing Texts(const char* launch, const char* extremeDim, const char* legacy, const Drawing& button) {
    return kHeaderTexts + RowTexts(0, "LAUNCH AT STARTUP", launch) +
           RowTexts(1, "ALLOW EXTREME DIM", extremeDim) + RowTexts(2, "LEGACY MODE", legacy) + button;
}

struct Drawn {
    Drawing all;
    Drawing surfaces;
    Drawing texts;
};

bool IsText(const std::string& line) {
    return line.starts_with("text ");
}

Drawn DrawPanel() {
    g_gdi.drawn.clear();
    DrawSettingsPanel(ScreenContext());
    Drawn drawn = {g_gdi.drawn, g_gdi.drawn, g_gdi.drawn};
    std::erase_if(drawn.surfaces, IsText);
    std::erase_if(drawn.texts, [](const std::string& line) { return !IsText(line); });
    return drawn;
}

class SettingsPanelDrawing : public DrawingTest {
protected:
    void SetUp() override {
        DrawingTest::SetUp();
        g_app.panel = Panel::Settings;
        g_tick = 70'000;
    }

    static void ExpectButton(const std::string& surface, const Drawing& texts) {
        const Drawn drawn = DrawPanel();
        EXPECT_EQ(drawn.surfaces, Surfaces(surface));
        EXPECT_EQ(drawn.texts, Texts("OFF", "OFF", "OFF", texts));
    }
    static void ExpectPlainButton() { ExpectButton(kButtonSurface, kButtonTexts); }
    static void ExpectCopied() { ExpectButton(kCopiedSurface, kCopiedTexts); }
};

}  // namespace

TEST_F(SettingsPanelDrawing, WithEveryFlagOffTheRowsShowOff) {
    const Drawn drawn = DrawPanel();
    EXPECT_EQ(drawn.surfaces, Surfaces(kButtonSurface));
    EXPECT_EQ(drawn.texts, Texts("OFF", "OFF", "OFF", kButtonTexts));
}

TEST_F(SettingsPanelDrawing, WithEveryFlagOnTheRowsShowOnInTheSameWhite) {
    g_app.launchAtStart = true;
    g_app.allowExtremeDim = true;
    g_app.useLegacyGamma = true;
    const Drawn drawn = DrawPanel();
    EXPECT_EQ(drawn.surfaces, Surfaces(kButtonSurface)) << "no switch is drawn";
    EXPECT_EQ(drawn.texts, Texts("ON", "ON", "ON", kButtonTexts));
}

TEST_F(SettingsPanelDrawing, EachRowShowsItsOwnFlagAsItIsWhenPainted) {
    g_app.launchAtStart = true;
    EXPECT_EQ(DrawPanel().texts, Texts("ON", "OFF", "OFF", kButtonTexts));
    g_app.launchAtStart = false;
    g_app.allowExtremeDim = true;
    EXPECT_EQ(DrawPanel().texts, Texts("OFF", "ON", "OFF", kButtonTexts));
    g_app.allowExtremeDim = false;
    g_app.useLegacyGamma = true;
    EXPECT_EQ(DrawPanel().texts, Texts("OFF", "OFF", "ON", kButtonTexts));
}

TEST_F(SettingsPanelDrawing, EachTextIsDrawnOverItsSurface) {
    const Drawing drawing = DrawPanel().all;
    const auto at = [&](const std::string& line) {
        const auto found = std::find(drawing.begin(), drawing.end(), line);
        EXPECT_NE(found, drawing.end()) << line;
        return found - drawing.begin();
    };
    EXPECT_EQ(at(Fill({0, 0, 320, 56}, 0x191919)), 0);
    static constexpr const char* labels[] = {"LAUNCH AT STARTUP", "ALLOW EXTREME DIM", "LEGACY MODE"};
    for (int row = 0; row < 3; ++row) {
        for (const std::string& text : RowTexts(row, labels[row], "OFF"))
            EXPECT_LT(at(RowBox(row)), at(text)) << row;
    }
    EXPECT_LT(at(kButtonSurface), at(kButtonTexts[0]));
}

TEST_F(SettingsPanelDrawing, TheDrawingDoesNotFollowTheDpi) {
    const Drawing at96 = DrawPanel().all;
    for (const std::uint32_t dpi : {120U, 144U, 192U, 0U}) {
        g_app.dpi = dpi;
        EXPECT_EQ(DrawPanel().all, at96) << dpi;
    }
}

TEST_F(SettingsPanelDrawing, NothingElseOfTheStateIsShown) {
    const Drawing plain = DrawPanel().all;
    g_app.filterOn = true;
    g_app.intensity = 0.9;
    g_app.brightness = 0.2;
    g_app.lastApplyRejected = true;
    g_app.pwmSafe = true;
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(DrawPanel().all, plain);
}

TEST_F(SettingsPanelDrawing, TheCopiedIndicationLastsWhileTheTimeIsStrictlyBelowItsEnd) {
    g_app.copiedUntil = 75'000;
    ExpectCopied();
    g_tick = 74'999;
    ExpectCopied();
    g_tick = 75'000;
    ExpectPlainButton();
    g_tick = 75'001;
    ExpectPlainButton();
}

TEST_F(SettingsPanelDrawing, BeforeTheFirstCopyTheButtonIsPlain) {
    g_app.copiedUntil = 0;
    ExpectPlainButton();
    g_tick = 0;
    ExpectPlainButton();
}

TEST_F(SettingsPanelDrawing, ASecondCopyExtendsTheCopiedIndication) {
    g_app.copiedUntil = 75'000;
    g_tick = 74'000;
    ExpectCopied();
    g_app.copiedUntil = 79'000;
    g_tick = 78'999;
    ExpectCopied();
    g_tick = 79'000;
    ExpectPlainButton();
}

TEST_F(SettingsPanelDrawing, TheCopiedIndicationDoesNotChangeTheRows) {
    g_app.copiedUntil = 75'000;
    g_app.allowExtremeDim = true;
    const Drawn drawn = DrawPanel();
    EXPECT_EQ(drawn.surfaces, Surfaces(kCopiedSurface));
    EXPECT_EQ(drawn.texts, Texts("OFF", "ON", "OFF", kCopiedTexts));
}

TEST_F(SettingsPanelDrawing, TheAddressInCapitalsIsTheSupportAddress) {
    std::wstring capitals = AMBREL_SUPPORT_ADDRESS;
    for (wchar_t& letter : capitals) {
        if (letter >= L'a' && letter <= L'z') letter = static_cast<wchar_t>(letter - L'a' + L'A');
    }
    EXPECT_EQ(capitals, AMBREL_SUPPORT_ADDRESS_CAPITALS);
}
