#include "filter/model/displayed_values.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

namespace {

std::wstring Label(double intensity) {
    wchar_t label[16];
    FormatKelvinLabel(intensity, label, std::size(label));
    return label;
}

constexpr double kDay = 0.3846153846153846;
constexpr double kEvening = 0.5846153846153845;

}  // namespace

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
