#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <iterator>

#include "filter/model/warmth.h"

namespace {

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
