// Tinting of a cursor's colours: the tables of the three channels and the recoloured pixels.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "filter/model/cursor_pixels.h"

namespace {

// The C library rounds exact halves away from zero, which is up for the values of a colour.
int Rounded(int value, double factor) {
    const double product = value * factor;
    if (product <= 0.0) return 0;
    if (product >= 255.0) return 255;
    return static_cast<int>(std::lround(product));
}

TintTables TablesFor(double red, double green, double blue) {
    TintTables tables;
    BuildTintTables({red, green, blue}, &tables);
    return tables;
}

// Different in every channel, so that swapped channels are detected.
TintTables DistinctTables() {
    return TablesFor(0.7, 0.4, 0.1);
}

std::array<int, 4> BytesOf(const CursorPixel& pixel) {
    return {pixel.blue, pixel.green, pixel.red, pixel.alpha};
}

std::array<int, 4> Tinted(CursorPixel pixel, const TintTables& tables) {
    TintPixels(&pixel, 1, tables);
    return BytesOf(pixel);
}

using Bytes = std::array<int, 4>;

constexpr std::array kFactors = {0.0,   0.001,  1.0 / 255.0, 0.01, 0.1,  0.1863, 0.25, 1.0 / 3.0, 0.5, 0.51,
                                 0.585, 0.6571, 0.6999,      0.7,  0.85, 0.9390, 0.99, 0.999,     1.0};

}  // namespace

TEST(CursorTables, EveryValueIsItsProductRoundedInAllThreeChannels) {
    for (const double factor : kFactors) {
        const TintTables tables = TablesFor(factor, factor, factor);
        for (int value = 0; value < 256; ++value) {
            EXPECT_EQ(tables.red[value], Rounded(value, factor)) << value << " " << factor;
            EXPECT_EQ(tables.green[value], Rounded(value, factor)) << value << " " << factor;
            EXPECT_EQ(tables.blue[value], Rounded(value, factor)) << value << " " << factor;
        }
    }
}

TEST(CursorTables, EachChannelHasItsOwnFactor) {
    const TintTables tables = DistinctTables();
    for (int value = 0; value < 256; ++value) {
        EXPECT_EQ(tables.red[value], Rounded(value, 0.7)) << value;
        EXPECT_EQ(tables.green[value], Rounded(value, 0.4)) << value;
        EXPECT_EQ(tables.blue[value], Rounded(value, 0.1)) << value;
    }
}

TEST(CursorTables, AHalfIsRoundedUp) {
    const TintTables tables = TablesFor(0.5, 0.25, 0.75);
    for (int value = 0; value < 256; ++value) {
        EXPECT_EQ(tables.red[value], (value + 1) / 2) << value;
        EXPECT_EQ(tables.green[value], (value + 2) / 4) << value;
        EXPECT_EQ(tables.blue[value], (3 * value + 2) / 4) << value;
    }
}

TEST(CursorTables, TheProductIsComputedInDoublePrecision) {
    const TintTables tables = TablesFor(0.7, 0.7, 0.7);
    EXPECT_EQ(tables.red[255], 179);  // 178.5
    EXPECT_EQ(tables.red[35], 25);    // 24.5
    EXPECT_EQ(tables.red[5], 4);      // 3.5
    EXPECT_EQ(tables.red[45], 31);    // 31.499999999999996
    EXPECT_EQ(tables.red[254], 178);  // 177.8
    EXPECT_EQ(tables.red[1], 1);      // 0.7
}

TEST(CursorTables, AFactorOfOneChangesNothingAndOfZeroLeavesBlack) {
    const TintTables tables = TablesFor(1.0, 0.0, 1.0);
    for (int value = 0; value < 256; ++value) {
        EXPECT_EQ(tables.red[value], value);
        EXPECT_EQ(tables.green[value], 0);
        EXPECT_EQ(tables.blue[value], value);
    }
}

TEST(CursorTables, ProductsOutsideTheRangeAreClamped) {
    const TintTables tables = TablesFor(2.0, -0.5, 1.002);
    for (int value = 0; value < 256; ++value) {
        EXPECT_EQ(tables.red[value], value < 128 ? 2 * value : 255) << value;
        EXPECT_EQ(tables.green[value], 0) << value;
        EXPECT_EQ(tables.blue[value], Rounded(value, 1.002)) << value;
    }
    EXPECT_EQ(tables.blue[255], 255);
}

TEST(CursorTables, WhiteAtSeventyPercentOfPureRedBecomesRed179) {
    const TintTables night = TablesFor(1.0 * 0.7, 0.0 * 0.7, 0.0 * 0.7);
    EXPECT_EQ(Tinted({255, 255, 255, 255}, night), (Bytes{0, 0, 179, 255}));
    EXPECT_EQ(Tinted({255, 255, 255, 77}, night), (Bytes{0, 0, 179, 77}));
    EXPECT_EQ(Tinted({255, 255, 255, 0}, night), (Bytes{0, 0, 179, 0}));
}

TEST(CursorPixels, AreFourBytesInTheOrderOfADib) {
    CursorPixel pixel = {1, 2, 3, 4};
    const auto* bytes = reinterpret_cast<const unsigned char*>(&pixel);
    EXPECT_EQ(bytes[0], 1) << "blue";
    EXPECT_EQ(bytes[1], 2) << "green";
    EXPECT_EQ(bytes[2], 3) << "red";
    EXPECT_EQ(bytes[3], 4) << "alpha";
    EXPECT_EQ(pixel.blue, 1);
    EXPECT_EQ(pixel.green, 2);
    EXPECT_EQ(pixel.red, 3);
    EXPECT_EQ(pixel.alpha, 4);
}

TEST(CursorPixels, EveryValueOfEachChannelIsLookedUpInItsOwnTable) {
    const TintTables tables = DistinctTables();
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        EXPECT_EQ(Tinted({byte, 0, 0, 9}, tables), (Bytes{Rounded(value, 0.1), 0, 0, 9}));
        EXPECT_EQ(Tinted({0, byte, 0, 9}, tables), (Bytes{0, Rounded(value, 0.4), 0, 9}));
        EXPECT_EQ(Tinted({0, 0, byte, 9}, tables), (Bytes{0, 0, Rounded(value, 0.7), 9}));
    }
}

TEST(CursorPixels, AlphaIsNeverChanged) {
    const TintTables dark = TablesFor(0.0, 0.0, 0.0);
    for (int alpha = 0; alpha < 256; ++alpha) {
        EXPECT_EQ(Tinted({200, 100, 50, static_cast<std::uint8_t>(alpha)}, dark), (Bytes{0, 0, 0, alpha}));
        EXPECT_EQ(Tinted({200, 100, 50, static_cast<std::uint8_t>(alpha)}, DistinctTables()),
                  (Bytes{20, 40, 35, alpha}));
    }
}

// Tables in which even 0 changes, so that every lookup is detected.
TEST(CursorPixels, APixelOfFourZeroBytesIsSkipped) {
    TintTables tables = DistinctTables();
    tables.red[0] = tables.green[0] = tables.blue[0] = 99;
    EXPECT_EQ(Tinted({0, 0, 0, 0}, tables), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(Tinted({0, 0, 0, 1}, tables), (Bytes{99, 99, 99, 1}));
    EXPECT_EQ(Tinted({0, 0, 1, 0}, tables), (Bytes{99, 99, 1, 0}));
    EXPECT_EQ(Tinted({0, 1, 0, 0}, tables), (Bytes{99, 0, 99, 0}));
    EXPECT_EQ(Tinted({1, 0, 0, 0}, tables), (Bytes{0, 99, 99, 0}));
}

TEST(CursorPixels, ColourWithoutAlphaIsTintedToo) {
    EXPECT_EQ(Tinted({255, 255, 255, 0}, DistinctTables()), (Bytes{26, 102, 179, 0}));
}

TEST(CursorPixels, OnlyTheGivenNumberOfPixelsIsTouched) {
    std::vector<CursorPixel> pixels(10, CursorPixel{255, 255, 255, 255});
    TintPixels(pixels.data() + 2, 5, TablesFor(0.0, 0.0, 0.0));
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int expected = i >= 2 && i < 7 ? 0 : 255;
        EXPECT_EQ(BytesOf(pixels[i]), (Bytes{expected, expected, expected, 255})) << i;
    }
    TintPixels(pixels.data(), 0, TablesFor(0.0, 0.0, 0.0));
    EXPECT_EQ(BytesOf(pixels[0]), (Bytes{255, 255, 255, 255}));
}

TEST(CursorPixels, NeutralFactorsChangeNoPixel) {
    const TintTables neutral = TablesFor(1.0, 1.0, 1.0);
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        const auto other = static_cast<std::uint8_t>(255 - value);
        EXPECT_EQ(Tinted({byte, other, 17, byte}, neutral), (Bytes{value, 255 - value, 17, value}));
    }
}
