// Conversion between raw brightness and percent, against integer searches and figures calculated by hand.
#include <gtest/gtest.h>

#include <cstdint>

#include "brightness/ddc.h"

namespace {

constexpr std::uint32_t kMaxRaw = 0xFFFFFFFF;

// The smallest percent less than half a step below the true value: rounded to nearest, halves up.
std::uint32_t SearchPercent(std::uint32_t above, std::uint32_t range) {
    std::uint32_t percent = 0;
    while (2 * percent * range + range <= 200 * above)
        ++percent;
    return percent;
}

std::uint32_t SearchRaw(std::uint32_t range, std::uint32_t percent) {
    std::uint32_t raw = 0;
    while (200 * raw + 100 <= 2 * range * percent)
        ++raw;
    return raw;
}

}  // namespace

TEST(PercentOfRange, ReadsARangeFrom0To100Unchanged) {
    EXPECT_EQ(PercentOfRange(0, 37, 100), 37U);
    EXPECT_EQ(PercentOfRange(0, 0, 100), 0U);
    EXPECT_EQ(PercentOfRange(0, 1, 100), 1U);
    EXPECT_EQ(PercentOfRange(0, 99, 100), 99U);
    EXPECT_EQ(PercentOfRange(0, 100, 100), 100U);
}

TEST(PercentOfRange, SubtractsTheMinimum) {
    EXPECT_EQ(PercentOfRange(10, 55, 100), 50U);
    EXPECT_EQ(PercentOfRange(20, 40, 100), 25U);
}

TEST(PercentOfRange, RoundsToNearestAndHalvesUp) {
    EXPECT_EQ(PercentOfRange(0, 1, 3), 33U);
    EXPECT_EQ(PercentOfRange(0, 2, 3), 67U);
    EXPECT_EQ(PercentOfRange(0, 1, 8), 13U);       // 12.5
    EXPECT_EQ(PercentOfRange(0, 1, 200), 1U);      // 0.5
    EXPECT_EQ(PercentOfRange(0, 1, 201), 0U);      // 0.4975
    EXPECT_EQ(PercentOfRange(0, 199, 200), 100U);  // 99.5
    EXPECT_EQ(PercentOfRange(0, 254, 255), 100U);  // 99.6
    EXPECT_EQ(PercentOfRange(0, 253, 255), 99U);   // 99.2
}

TEST(PercentOfRange, ClampsToTheRange) {
    EXPECT_EQ(PercentOfRange(10, 9, 100), 0U);
    EXPECT_EQ(PercentOfRange(10, 10, 100), 0U);
    EXPECT_EQ(PercentOfRange(10, 0, 100), 0U);
    EXPECT_EQ(PercentOfRange(0, 101, 100), 100U);
    EXPECT_EQ(PercentOfRange(0, kMaxRaw, 100), 100U);
}

TEST(PercentOfRange, ReadsAnEmptyOrReversedRangeAs100) {
    EXPECT_EQ(PercentOfRange(50, 50, 50), 100U);
    EXPECT_EQ(PercentOfRange(50, 10, 50), 100U);
    EXPECT_EQ(PercentOfRange(0, 0, 0), 100U);
    EXPECT_EQ(PercentOfRange(100, 20, 10), 100U);
    EXPECT_EQ(PercentOfRange(kMaxRaw, 0, 0), 100U);
}

TEST(PercentOfRange, TheWidestRangesDoNotOverflow) {
    EXPECT_EQ(PercentOfRange(0, 0x7FFFFFFF, kMaxRaw), 50U);
    EXPECT_EQ(PercentOfRange(0, 0x40000000, kMaxRaw), 25U);
    EXPECT_EQ(PercentOfRange(0, kMaxRaw - 1, kMaxRaw), 100U);
    EXPECT_EQ(PercentOfRange(0, kMaxRaw, kMaxRaw), 100U);
    EXPECT_EQ(PercentOfRange(kMaxRaw - 4, kMaxRaw - 3, kMaxRaw), 25U);
    EXPECT_EQ(PercentOfRange(1, 1, kMaxRaw), 0U);
}

TEST(PercentOfRange, AgreesWithASearchForEveryReadingOfEveryRangeUpTo300) {
    for (std::uint32_t range = 1; range <= 300; ++range) {
        for (std::uint32_t above = 0; above <= range; ++above)
            ASSERT_EQ(PercentOfRange(7, 7 + above, 7 + range), SearchPercent(above, range))
                << above << " of " << range;
    }
}

TEST(RawBrightness, ScalesToTheRange) {
    EXPECT_EQ(RawBrightness(0, 100, 37), 37U);
    EXPECT_EQ(RawBrightness(0, 80, 100), 80U);
    EXPECT_EQ(RawBrightness(0, 80, 50), 40U);
    EXPECT_EQ(RawBrightness(0, 100, 0), 0U);
}

TEST(RawBrightness, StartsAtTheMinimum) {
    EXPECT_EQ(RawBrightness(10, 100, 0), 10U);
    EXPECT_EQ(RawBrightness(10, 100, 50), 55U);
    EXPECT_EQ(RawBrightness(10, 100, 100), 100U);
}

TEST(RawBrightness, RoundsToNearestAndHalvesUp) {
    EXPECT_EQ(RawBrightness(0, 255, 50), 128U);  // 127.5
    EXPECT_EQ(RawBrightness(0, 255, 10), 26U);   // 25.5
    EXPECT_EQ(RawBrightness(0, 255, 33), 84U);   // 84.15
    EXPECT_EQ(RawBrightness(0, 3, 50), 2U);      // 1.5
    EXPECT_EQ(RawBrightness(0, 3, 49), 1U);      // 1.47
    EXPECT_EQ(RawBrightness(0, 1, 49), 0U);
    EXPECT_EQ(RawBrightness(0, 1, 50), 1U);
}

TEST(RawBrightness, ReturnsTheMaximumOfAnEmptyOrReversedRange) {
    EXPECT_EQ(RawBrightness(50, 50, 100), 50U);
    EXPECT_EQ(RawBrightness(50, 50, 0), 50U);
    EXPECT_EQ(RawBrightness(100, 10, 100), 10U);
    EXPECT_EQ(RawBrightness(100, 10, 30), 10U);
    EXPECT_EQ(RawBrightness(0, 0, 100), 0U);
}

TEST(RawBrightness, TheWidestRangesDoNotOverflow) {
    EXPECT_EQ(RawBrightness(0, kMaxRaw, 100), kMaxRaw);
    EXPECT_EQ(RawBrightness(0, kMaxRaw, 50), 0x80000000U);  // 2147483647.5
    EXPECT_EQ(RawBrightness(0, kMaxRaw, 1), 42949673U);     // 42949672.95
    EXPECT_EQ(RawBrightness(kMaxRaw - 4, kMaxRaw, 100), kMaxRaw);
    EXPECT_EQ(RawBrightness(kMaxRaw - 4, kMaxRaw, 50), kMaxRaw - 2);
}

TEST(RawBrightness, AgreesWithASearchForEveryPercentOfEveryRangeUpTo300) {
    for (std::uint32_t range = 1; range <= 300; ++range) {
        for (std::uint32_t percent = 0; percent <= 100; ++percent)
            ASSERT_EQ(RawBrightness(7, 7 + range, percent), 7 + SearchRaw(range, percent))
                << percent << " percent of " << range;
    }
}

TEST(RawBrightness, AMonitorSetTo100ReadsAs100RegardlessOfTheRange) {
    for (std::uint32_t minimum = 0; minimum <= 60; ++minimum) {
        for (std::uint32_t maximum = 0; maximum <= 120; ++maximum)
            ASSERT_EQ(PercentOfRange(minimum, RawBrightness(minimum, maximum, 100), maximum), 100U);
    }
}

TEST(RawBrightness, EveryPercentIsReadBackIfTheRangeHasAtLeast100Steps) {
    for (std::uint32_t range = 100; range <= 300; ++range) {
        for (std::uint32_t percent = 0; percent <= 100; ++percent)
            ASSERT_EQ(PercentOfRange(3, RawBrightness(3, 3 + range, percent), 3 + range), percent);
    }
}
