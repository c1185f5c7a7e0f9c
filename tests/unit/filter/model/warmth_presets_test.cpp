#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <string>

#include "filter/model/warmth.h"

namespace {

std::wstring Label(double intensity) {
    wchar_t label[16];
    FormatKelvinLabel(intensity, label, std::size(label));
    return label;
}

const PresetRow& Row(FilterPreset preset) {
    for (const PresetRow& row : kPresets) {
        if (row.preset == preset) return row;
    }
    ADD_FAILURE() << "no such preset";
    return kPresets[0];
}

constexpr double kDay = 0.3846153846153846;
constexpr double kEvening = 0.5846153846153845;

}  // namespace

TEST(Presets, ThereAreThreeInTheOrderOfTheirButtons) {
    ASSERT_EQ(std::size(kPresets), 3u);
    EXPECT_EQ(kPresets[0].preset, FilterPreset::Day);
    EXPECT_EQ(kPresets[1].preset, FilterPreset::Evening);
    EXPECT_EQ(kPresets[2].preset, FilterPreset::Night);
    EXPECT_STREQ(kPresets[0].label, L"DAY");
    EXPECT_STREQ(kPresets[1].label, L"EVENING");
    EXPECT_STREQ(kPresets[2].label, L"NIGHT");
}

TEST(Presets, TheirIntensitiesHaveTheExactBits) {
    // 5/13 and 38/65 themselves would end in ...9D9 and ...B53.
    EXPECT_EQ(std::bit_cast<std::uint64_t>(Row(FilterPreset::Day).intensity), 0x3FD89D89D89D89D8u);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(Row(FilterPreset::Evening).intensity), 0x3FE2B52B52B52B52u);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(Row(FilterPreset::Night).intensity), 0x3FF0000000000000u);
}

TEST(Presets, EachHasItsBrightness) {
    EXPECT_EQ(Row(FilterPreset::Day).brightness, 1.0);
    EXPECT_EQ(Row(FilterPreset::Evening).brightness, 0.85);
    EXPECT_EQ(Row(FilterPreset::Night).brightness, 0.7);
}

TEST(RecognisePreset, EachPresetIsItself) {
    EXPECT_EQ(RecognisePreset(kDay), FilterPreset::Day);
    EXPECT_EQ(RecognisePreset(kEvening), FilterPreset::Evening);
    EXPECT_EQ(RecognisePreset(1.0), FilterPreset::Night);
}

TEST(RecognisePreset, AFreshSettingsFileIsDay) {
    EXPECT_EQ(RecognisePreset(0.385), FilterPreset::Day);
}

TEST(RecognisePreset, DayReachesTo0365ButNotTo03646) {
    EXPECT_EQ(RecognisePreset(0.365), FilterPreset::Day);
    EXPECT_EQ(RecognisePreset(0.3646), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(0.4046), FilterPreset::Day);
    EXPECT_EQ(RecognisePreset(0.4047), FilterPreset::None);
}

TEST(RecognisePreset, EveningReachesTwoHundredthsEitherWay) {
    EXPECT_EQ(RecognisePreset(0.5647), FilterPreset::Evening);
    EXPECT_EQ(RecognisePreset(0.5646), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(0.6046), FilterPreset::Evening);
    EXPECT_EQ(RecognisePreset(0.6047), FilterPreset::None);
}

TEST(RecognisePreset, NightReachesDownToButNotIncluding098) {
    EXPECT_EQ(RecognisePreset(0.9801), FilterPreset::Night);
    EXPECT_EQ(RecognisePreset(0.9800000000000001), FilterPreset::Night);
    EXPECT_EQ(RecognisePreset(0.98), FilterPreset::None);
}

TEST(RecognisePreset, TheLastNumberInsideAndTheFirstOutsideDifferInOneBit) {
    EXPECT_EQ(RecognisePreset(0.3646153846153846), FilterPreset::Day);
    EXPECT_EQ(RecognisePreset(0.36461538461538456), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(0.40461538461538454), FilterPreset::Day);
    EXPECT_EQ(RecognisePreset(0.4046153846153846), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(0.5646153846153846), FilterPreset::Evening);
    EXPECT_EQ(RecognisePreset(0.5646153846153845), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(0.6046153846153844), FilterPreset::Evening);
    EXPECT_EQ(RecognisePreset(0.6046153846153846), FilterPreset::None);
}

TEST(RecognisePreset, EverythingElseIsNone) {
    EXPECT_EQ(RecognisePreset(0.0), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(0.48), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(0.75), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(-1.0), FilterPreset::None);
    EXPECT_EQ(RecognisePreset(1.03), FilterPreset::None);
}

TEST(ClampBrightness, WithoutExtremeDimTheFloorIsATenth) {
    EXPECT_EQ(ClampBrightness(0.05, false), 0.1);
    EXPECT_EQ(ClampBrightness(0.0, false), 0.1);
    EXPECT_EQ(ClampBrightness(-3.0, false), 0.1);
    EXPECT_EQ(ClampBrightness(0.0999999, false), 0.1);
    EXPECT_EQ(ClampBrightness(0.1, false), 0.1);
    EXPECT_EQ(ClampBrightness(0.1000001, false), 0.1000001);
}

TEST(ClampBrightness, WithExtremeDimTheFloorIsZero) {
    EXPECT_EQ(ClampBrightness(0.05, true), 0.05);
    EXPECT_EQ(ClampBrightness(0.0, true), 0.0);
    EXPECT_EQ(ClampBrightness(-0.0001, true), 0.0);
}

TEST(ClampBrightness, TheCeilingIsOneEitherWay) {
    EXPECT_EQ(ClampBrightness(1.3, false), 1.0);
    EXPECT_EQ(ClampBrightness(1.3, true), 1.0);
    EXPECT_EQ(ClampBrightness(4294967.295, true), 1.0);
    EXPECT_EQ(ClampBrightness(1.0, false), 1.0);
}

TEST(ClampBrightness, ValuesInRangeAreUnchanged) {
    EXPECT_EQ(ClampBrightness(0.85, false), 0.85);
    EXPECT_EQ(ClampBrightness(0.7, true), 0.7);
}

TEST(KelvinLabel, HasAThousandsSeparatorFrom1000Up) {
    EXPECT_EQ(Label(0.0), L"6,500K");
    EXPECT_EQ(Label(kDay), L"4,000K");
    EXPECT_EQ(Label(kEvening), L"2,700K");
    EXPECT_EQ(Label(1.0 - 2000.0 / 6500.0), L"2,000K");
    EXPECT_EQ(Label(1.0 - 1000.0 / 6500.0), L"1,000K");
}

TEST(KelvinLabel, PadsTheDigitsAfterTheSeparatorToThree) {
    EXPECT_EQ(Label(1.0 - 1005.0 / 6500.0), L"1,005K");
    EXPECT_EQ(Label(1.0 - 3050.0 / 6500.0), L"3,050K");
}

TEST(KelvinLabel, IsPlainBelow1000) {
    EXPECT_EQ(Label(1.0 - 999.0 / 6500.0), L"999K");
    EXPECT_EQ(Label(0.9), L"650K");
    EXPECT_EQ(Label(1.0 - 7.0 / 6500.0), L"7K");
    EXPECT_EQ(Label(1.0), L"0K");
}

TEST(KelvinLabel, IsRoundedBeforeTheSeparatorIsChosen) {
    EXPECT_EQ(Label(1.0 - 999.6 / 6500.0), L"1,000K");
    EXPECT_EQ(Label(1.0 - 999.4 / 6500.0), L"999K");
}

TEST(KelvinLabel, HalvesAreRoundedAwayFromZero) {
    EXPECT_EQ(Label(0.875), L"813K");    // 812.5
    EXPECT_EQ(Label(0.375), L"4,063K");  // 4062.5
    EXPECT_EQ(RoundedKelvin(0.875), 813);
}

TEST(KelvinLabel, OutsideItsRangeTheIntensityIsItsNearestEnd) {
    EXPECT_EQ(Label(-2.0), L"6,500K");
    EXPECT_EQ(Label(2.0), L"0K");
}

TEST(KelvinLabel, IsTruncatedToTheCapacity) {
    wchar_t label[5] = {L'?', L'?', L'?', L'?', L'?'};
    FormatKelvinLabel(0.0, label, 4);
    EXPECT_STREQ(label, L"6,5");
    EXPECT_EQ(label[4], L'?');
}

TEST(RoundedKelvin, IsTheWholeNumberOfThePlainLine) {
    EXPECT_EQ(RoundedKelvin(kDay), 4000);
    EXPECT_EQ(RoundedKelvin(kEvening), 2700);
    EXPECT_EQ(RoundedKelvin(0.385), 3998);  // 3997.5
    EXPECT_EQ(RoundedKelvin(1.0), 0);
}

TEST(TruncatedPercent, NeverRoundsUp) {
    EXPECT_EQ(TruncatedPercent(1.0), 100);
    EXPECT_EQ(TruncatedPercent(0.999), 99);
    EXPECT_EQ(TruncatedPercent(0.996), 99);
    EXPECT_EQ(TruncatedPercent(0.85), 85);
    EXPECT_EQ(TruncatedPercent(0.7), 70);
    EXPECT_EQ(TruncatedPercent(0.1), 10);
    EXPECT_EQ(TruncatedPercent(0.0099), 0);
    EXPECT_EQ(TruncatedPercent(0.0), 0);
}

TEST(TruncatedPercent, TruncatesTheProductInDoublePrecision) {
    EXPECT_EQ(TruncatedPercent(0.29), 28);  // 0.29 * 100 is 28.999999999999996
    EXPECT_EQ(TruncatedPercent(0.57), 56);  // 56.99999999999999
}
