// Names, roles, states, values, descriptions and actions of every state of both panels.
#include <gtest/gtest.h>

#include <cwchar>
#include <ostream>
#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "ui/accessible_controls.h"

#include <oleacc.h>

namespace {

struct Row {
    std::wstring name;
    DWORD role;
    DWORD state = 0;
    std::wstring value;
    std::wstring description;
    std::wstring action;

    bool operator==(const Row&) const = default;
};

void PrintTo(const Row& row, std::ostream* out) {
    for (const std::wstring* text : {&row.name, &row.value, &row.description, &row.action}) {
        for (const wchar_t character : *text)
            *out << (character < 128 ? static_cast<char>(character) : '?');
        *out << '|';
    }
    *out << row.role << '|' << std::hex << row.state << std::dec;
}

std::wstring OrEmpty(const wchar_t* text) {
    return text != nullptr ? text : L"";
}

std::vector<Row> Shown() {
    const ShownPanel panel = ReadShownPanel();
    std::vector<Row> rows;
    for (int i = 0; i < panel.count; ++i) {
        const ShownControl& control = panel.controls[i];
        rows.push_back({OrEmpty(control.facts.name), control.facts.role, control.facts.state,
                        control.facts.value, OrEmpty(control.facts.description), OrEmpty(control.action)});
    }
    return rows;
}

constexpr DWORD kText = ROLE_SYSTEM_STATICTEXT;
constexpr DWORD kButton = ROLE_SYSTEM_PUSHBUTTON;
constexpr DWORD kCheckButton = ROLE_SYSTEM_CHECKBUTTON;
constexpr DWORD kRadioButton = ROLE_SYSTEM_RADIOBUTTON;
constexpr DWORD kSlider = ROLE_SYSTEM_SLIDER;
constexpr DWORD kReadOnly = STATE_SYSTEM_READONLY;
constexpr DWORD kChecked = STATE_SYSTEM_CHECKED;

const Row kUnlitHint = {
    L"\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%", kText, kReadOnly, L"", L"", L""};

Row Check(const wchar_t* name, bool on, const wchar_t* description = L"") {
    return {name, kCheckButton, on ? kChecked : 0, L"", description, on ? L"Uncheck" : L"Check"};
}

Row Preset(const wchar_t* name, bool selected) {
    return {name, kRadioButton, selected ? kChecked : 0, L"", L"", L"Check"};
}

// The main panel with a preset selected, or none.
std::vector<Row> MainPanel(const wchar_t* warmth, const wchar_t* brightness, const Row& strip,
                           const std::wstring& preset, bool on) {
    return {{L"AMBREL", kText, kReadOnly, L"", L"", L""},
            {L"SETTINGS", kButton, 0, L"", L"", L"Press"},
            {L"WARMTH", kText, kReadOnly, L"", L"", L""},
            {L"WARMTH", kSlider, 0, warmth, L"", L""},
            {L"BRIGHTNESS", kText, kReadOnly, L"", L"", L""},
            {L"BRIGHTNESS", kSlider, 0, brightness, L"", L""},
            strip,
            Preset(L"DAY", preset == L"DAY"),
            Preset(L"EVENING", preset == L"EVENING"),
            Preset(L"NIGHT", preset == L"NIGHT"),
            Check(L"KIVO", on)};
}

std::vector<Row> SettingsPanel(bool on, const Row& support) {
    return {{L"SETTINGS", kText, kReadOnly, L"", L"", L""},
            {L"CLOSE", kButton, 0, L"", L"", L"Press"},
            Check(L"LAUNCH AT STARTUP", on),
            Check(L"ALLOW EXTREME DIM", on),
            Check(L"LEGACY MODE", on),
            support};
}

class AccessibleControls : public testing::Test {
protected:
    void SetUp() override { g_app = AppState{}; }
};

}  // namespace

TEST_F(AccessibleControls, TheMainPanelWithTheFilterOff) {
    g_app.intensity = 0.1;
    EXPECT_EQ(Shown(), MainPanel(L"5,850K", L"100%", kUnlitHint, L"", false));
}

TEST_F(AccessibleControls, EachPresetIsSelectedByItsWarmth) {
    g_app.filterOn = true;
    g_app.intensity = 0.3846153846153846;
    EXPECT_EQ(Shown(), MainPanel(L"4,000K", L"100%", kUnlitHint, L"DAY", true));
    g_app.intensity = 0.5846153846153845;
    g_app.brightness = 0.95;
    EXPECT_EQ(Shown(), MainPanel(L"2,700K", L"95%", kUnlitHint, L"EVENING", true));
    g_app.intensity = 1.0;
    EXPECT_EQ(Shown(), MainPanel(L"0K", L"95%", kUnlitHint, L"NIGHT", true));
}

TEST_F(AccessibleControls, TheLitHintIsAnAlert) {
    g_app.brightness = 0.85;
    g_app.intensity = 0.0;
    const Row lit = {
        kUnlitHint.name, ROLE_SYSTEM_ALERT, kReadOnly | STATE_SYSTEM_ALERT_MEDIUM, L"", L"", L""};
    EXPECT_EQ(Shown(), MainPanel(L"6,500K", L"85%", lit, L"", false));
}

TEST_F(AccessibleControls, TheBannerIsAButtonWithItsLine) {
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = true;
    EXPECT_EQ(Shown()[6],
              (Row{L"\u26a0 COLORS BLOCKED BY WINDOWS. CLICK TO FIX", kButton, 0, L"", L"", L"Press"}));
    g_app.gammaRangeExpanded = true;
    EXPECT_EQ(Shown()[6],
              (Row{L"\u26a0 FIX APPLIED. RESTART YOUR COMPUTER", kButton, 0, L"", L"", L"Press"}));
}

TEST_F(AccessibleControls, TheCardIsACheckButtonDescribedByItsStatus) {
    g_app.pwmTargetsPresent = true;
    g_app.pwmTargetCount = 2;
    g_app.pwmTargetsAt100 = 1;
    EXPECT_EQ(Shown()[6], Check(L"PWM-SAFE MODE", false, L"LOCK DISPLAY AT 100%"));
    g_app.pwmSafe = true;
    g_app.pwmVerifyPending = true;
    EXPECT_EQ(Shown()[6], Check(L"PWM-SAFE MODE", true, L"VERIFYING 100% LOCK"));
    g_app.pwmVerifyPending = false;
    g_app.pwmLockConfirmed = true;
    EXPECT_EQ(Shown()[6], Check(L"PWM-SAFE MODE", true, L"DISPLAY LOCKED AT 100%"));
}

TEST_F(AccessibleControls, TheSettingsPanelWithEverySwitchOffAndOn) {
    const Row support = {L"COPY FEEDBACK FOR SUPPORT", kButton, 0, L"", L"", L"Press"};
    g_app.panel = Panel::Settings;
    EXPECT_EQ(Shown(), SettingsPanel(false, support));
    g_app.launchAtStart = g_app.allowExtremeDim = g_app.useLegacyGamma = true;
    EXPECT_EQ(Shown(), SettingsPanel(true, support));
}

TEST_F(AccessibleControls, ACopiedReportRenamesTheSupportButton) {
    g_app.panel = Panel::Settings;
    g_app.copiedUntil = UINT64_MAX;
    EXPECT_EQ(Shown(), SettingsPanel(false, {L"COPIED", kButton, 0, L"",
                                             L"PASTE INTO AN EMAIL TO SUPPORT@AMBREL.EXAMPLE", L"Press"}));
}

TEST_F(AccessibleControls, EveryRegionOfAPanelIsOneControlAtItsRectangle) {
    for (const Panel shown : {Panel::Main, Panel::Settings}) {
        g_app.panel = shown;
        const ShownPanel panel = ReadShownPanel();
        for (int number = 0; number < static_cast<int>(Region::None); ++number) {
            const auto region = static_cast<Region>(number);
            int times = 0;
            for (int i = 0; i < panel.count; ++i) {
                if (panel.controls[i].region != region) continue;
                ++times;
                const RECT rect = RegionRect(region);
                EXPECT_TRUE(EqualRect(&panel.controls[i].rect, &rect)) << number;
            }
            EXPECT_EQ(times, IsAvailable(region) ? 1 : 0) << number;
        }
    }
}
