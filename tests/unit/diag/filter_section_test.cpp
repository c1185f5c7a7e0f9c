#include "diag/report_fixture.h"

namespace {

class FilterSection : public SupportReport {
protected:
    std::wstring Preset(double intensity) {
        state.intensity = intensity;
        return After(L"Active preset:  ");
    }
};

constexpr wchar_t kDay[] = L"DAY (~4000K)";
constexpr wchar_t kEvening[] = L"EVENING (~2700K)";
constexpr wchar_t kNight[] = L"NIGHT (0K, pure red)";
constexpr wchar_t kCustom[] = L"custom";

}  // namespace

TEST_F(FilterSection, AFreshProgramHasItsDefaults) {
    EXPECT_EQ(Section(L"FILTER STATE"),
              L"=== FILTER STATE ===\r\n"
              L"Enabled (KIVO):  OFF\r\n"
              L"Intensity:      0.385  (warmth slider)\r\n"
              L"-> Kelvin:      3998K\r\n"
              L"-> Target RGB:  (1.000, 0.939, 0.515)\r\n"
              L"Brightness:     1.000  (100%)\r\n"
              L"Allow ext. dim: OFF\r\n"
              L"Active preset:  DAY (~4000K)\r\n"
              L"Pipeline:       Magnification API\r\n"
              L"\r\n");
}

TEST_F(FilterSection, TheSwitchesAreOnOrOffEachByItself) {
    state.filterOn = true;
    EXPECT_EQ(After(L"Enabled (KIVO):  "), L"ON");
    EXPECT_EQ(After(L"Allow ext. dim: "), L"OFF");
    state.filterOn = false;
    state.allowExtremeDim = true;
    EXPECT_EQ(After(L"Enabled (KIVO):  "), L"OFF");
    EXPECT_EQ(After(L"Allow ext. dim: "), L"ON");
}

TEST_F(FilterSection, TheExactDayIntensityIsDayAnd4000KelvinWithoutASeparator) {
    state.intensity = 0.3846153846153846;
    EXPECT_EQ(After(L"Intensity:      "), L"0.385  (warmth slider)");
    EXPECT_EQ(After(L"-> Kelvin:      "), L"4000K");
    EXPECT_EQ(After(L"Active preset:  "), kDay);
}

TEST_F(FilterSection, IntensityKelvinAndColourBelongTogether) {
    struct Row {
        double intensity;
        const wchar_t* intensityText;
        const wchar_t* kelvin;
        const wchar_t* colour;
    };
    for (const Row& row :
         {Row{0.0, L"0.000  (warmth slider)", L"6500K", L"(1.000, 1.000, 1.000)"},
          {0.1, L"0.100  (warmth slider)", L"5850K", L"(1.000, 0.993, 0.896)"},
          {0.25, L"0.250  (warmth slider)", L"4875K", L"(1.000, 0.973, 0.712)"},
          {0.5, L"0.500  (warmth slider)", L"3250K", L"(1.000, 0.886, 0.328)"},
          {0.5846153846153845, L"0.585  (warmth slider)", L"2700K", L"(1.000, 0.818, 0.186)"},
          {0.75, L"0.750  (warmth slider)", L"1625K", L"(1.000, 0.596, 0.018)"},
          {0.9, L"0.900  (warmth slider)", L"650K", L"(1.000, 0.163, 0.005)"},
          {1.0, L"1.000  (warmth slider)", L"0K", L"(1.000, 0.000, 0.000)"}}) {
        state.intensity = row.intensity;
        EXPECT_EQ(After(L"Intensity:      "), row.intensityText);
        EXPECT_EQ(After(L"-> Kelvin:      "), row.kelvin) << row.intensity;
        EXPECT_EQ(After(L"-> Target RGB:  "), row.colour) << row.intensity;
    }
}

TEST_F(FilterSection, AnIntensityOutOfRangeIsClampedForTheKelvinOnly) {
    state.intensity = 1.3;
    EXPECT_EQ(After(L"Intensity:      "), L"1.300  (warmth slider)");
    EXPECT_EQ(After(L"-> Kelvin:      "), L"0K");
    EXPECT_EQ(After(L"-> Target RGB:  "), L"(1.000, 0.000, 0.000)");
    state.intensity = -0.2;
    EXPECT_EQ(After(L"Intensity:      "), L"-0.200  (warmth slider)");
    EXPECT_EQ(After(L"-> Kelvin:      "), L"6500K");
    EXPECT_EQ(After(L"-> Target RGB:  "), L"(1.000, 1.000, 1.000)");
}

TEST_F(FilterSection, HalfAKelvinIsRoundedAwayFromZero) {
    state.intensity = 0.875;  // 812.5 K, exactly
    EXPECT_EQ(After(L"-> Kelvin:      "), L"813K");
}

TEST_F(FilterSection, TheColourIsThatOfTheWarmthRegardlessOfBrightness) {
    state.intensity = 0.3846153846153846;
    state.brightness = 0.1;
    EXPECT_EQ(After(L"-> Target RGB:  "), L"(1.000, 0.939, 0.515)");
}

TEST_F(FilterSection, TheBrightnessIsRoundedWhereThePanelTruncates) {
    struct Row {
        double brightness;
        const wchar_t* text;
    };
    for (const Row& row : {Row{0.999, L"0.999  (100%)"},
                           {0.996, L"0.996  (100%)"},
                           {0.994, L"0.994  (99%)"},
                           {0.845, L"0.845  (85%)"},
                           {0.844, L"0.844  (84%)"},
                           {0.7, L"0.700  (70%)"},
                           {0.1, L"0.100  (10%)"},
                           {0.005, L"0.005  (1%)"},
                           {0.004, L"0.004  (0%)"},
                           {0.0, L"0.000  (0%)"},
                           {1.0, L"1.000  (100%)"}}) {
        state.brightness = row.brightness;
        EXPECT_EQ(After(L"Brightness:     "), row.text);
    }
}

TEST_F(FilterSection, DayReachesJustUnderTheTolerance) {
    EXPECT_EQ(Preset(0.3846153846153846), kDay);
    EXPECT_EQ(Preset(0.385), kDay);
    EXPECT_EQ(Preset(0.365), kDay);
    EXPECT_EQ(Preset(0.4046), kDay);
    EXPECT_EQ(Preset(0.3646), kCustom);
    EXPECT_EQ(Preset(0.4047), kCustom);
}

TEST_F(FilterSection, EveningReachesJustUnderTheTolerance) {
    EXPECT_EQ(Preset(0.5846153846153845), kEvening);
    EXPECT_EQ(Preset(0.5647), kEvening);
    EXPECT_EQ(Preset(0.6046), kEvening);
    EXPECT_EQ(Preset(0.5646), kCustom);
    EXPECT_EQ(Preset(0.6047), kCustom);
}

TEST_F(FilterSection, NightReachesJustUnderTheTolerance) {
    EXPECT_EQ(Preset(1.0), kNight);
    EXPECT_EQ(Preset(0.9801), kNight);
    EXPECT_EQ(Preset(0.9799), kCustom);
}

TEST_F(FilterSection, AnyOtherWarmthIsCustom) {
    for (const double intensity : {0.0, 0.2, 0.48, 0.7, 0.9})
        EXPECT_EQ(Preset(intensity), kCustom) << intensity;
}

TEST_F(FilterSection, ThePresetIsThatOfTheWarmthRegardlessOfBrightness) {
    state.brightness = 0.33;
    EXPECT_EQ(Preset(0.5846153846153845), kEvening);
}
