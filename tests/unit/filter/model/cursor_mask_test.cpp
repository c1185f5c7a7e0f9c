// Which pixels of a cursor are transparent: the expansion of a monochrome cursor and the mask that is built
// from drawn pixels.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "filter/model/cursor_pixels.h"

namespace {

constexpr std::uint8_t kUntouched = 0x5A;

// The widths are at and next to every multiple of 8, 16 and 32 bits.
constexpr int kWidths[] = {1, 2, 7, 8, 9, 15, 16, 17, 20, 31, 32, 33, 47, 48, 49, 63, 64, 65, 96, 100};

// Rows of bits, the first pixel in the highest bit of the first byte, each row padded to `padding` bits.
class Bits {
public:
    Bits(int width, int height, int padding)
        : rowBytes_(static_cast<std::size_t>((width + padding - 1) / padding * (padding / 8))),
          bytes_(rowBytes_ * static_cast<std::size_t>(height), 0) {}

    void Set(int x, int y) { ByteOf(x, y) = static_cast<std::uint8_t>(ByteOf(x, y) | (128 >> (x & 7))); }
    std::size_t RowBytes() const { return rowBytes_; }
    const std::vector<std::uint8_t>& Bytes() const { return bytes_; }

private:
    std::uint8_t& ByteOf(int x, int y) {
        return bytes_[static_cast<std::size_t>(y) * rowBytes_ + static_cast<std::size_t>(x >> 3)];
    }

    std::size_t rowBytes_;
    std::vector<std::uint8_t> bytes_;
};

std::string TextOf(const CursorPixel& pixel) {
    char text[32];
    std::snprintf(text, sizeof(text), "B%d G%d R%d A%d", pixel.blue, pixel.green, pixel.red, pixel.alpha);
    return text;
}

const std::string kTransparentPixel = "B0 G0 R0 A0";
const std::string kBlackPixel = "B0 G0 R0 A255";
const std::string kWhitePixel = "B255 G255 R255 A255";

// An irregular but fixed pattern in which all four combinations of two bits occur, also at both edges.
bool AndBit(int x, int y) {
    return (x * 7 + y * 3) % 5 < 2;
}
bool XorBit(int x, int y) {
    return (x * 5 + y * 11) % 3 == 1;
}

struct Expanded {
    std::vector<CursorPixel> pixels;
    std::vector<std::uint8_t> mask;  // followed by a row of kUntouched
};

template <typename And, typename Xor>
Expanded Expand(int width, int height, And andBit, Xor xorBit) {
    Bits halves(width, 2 * height, 32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (andBit(x, y)) halves.Set(x, y);
            if (xorBit(x, y)) halves.Set(x, y + height);
        }
    }
    Expanded result;
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    result.pixels.assign(count + 1, CursorPixel{kUntouched, kUntouched, kUntouched, kUntouched});
    result.mask = Bits(width, height, 16).Bytes();
    result.mask.insert(result.mask.end(), 4, kUntouched);
    ExpandMonochrome(halves.Bytes().data(), width, height, result.pixels.data(), result.mask.data());
    return result;
}

bool MaskBit(const std::vector<std::uint8_t>& mask, int width, int x, int y) {
    const int rowBytes = (width + 15) / 16 * 2;
    const auto byte = static_cast<std::size_t>(y * rowBytes + x / 8);
    return (mask[byte] >> (7 - x % 8) & 1) != 0;
}

// One pixel, by its two bits.
Expanded One(bool andBit, bool xorBit) {
    return Expand(
        1, 1, [=](int, int) { return andBit; }, [=](int, int) { return xorBit; });
}

}  // namespace

TEST(MonochromeCursor, AndWithoutXorIsTransparent) {
    const Expanded one = One(true, false);
    EXPECT_EQ(TextOf(one.pixels[0]), kTransparentPixel);
    EXPECT_EQ(one.mask[0], 0x80);
}

TEST(MonochromeCursor, XorWithoutAndIsOpaqueWhite) {
    const Expanded one = One(false, true);
    EXPECT_EQ(TextOf(one.pixels[0]), kWhitePixel);
    EXPECT_EQ(one.mask[0], 0x00);
}

TEST(MonochromeCursor, NeitherBitIsOpaqueBlack) {
    const Expanded one = One(false, false);
    EXPECT_EQ(TextOf(one.pixels[0]), kBlackPixel);
    EXPECT_EQ(one.mask[0], 0x00);
}

TEST(MonochromeCursor, BothBitsWhichInvertTheScreenAreOpaqueWhite) {
    const Expanded one = One(true, true);
    EXPECT_EQ(TextOf(one.pixels[0]), kWhitePixel);
    EXPECT_EQ(one.mask[0], 0x00);
}

TEST(MonochromeCursor, EveryPixelOfEveryWidthFollowsItsTwoBits) {
    for (const int width : kWidths) {
        for (const int height : {1, 2, 13, 32}) {
            const Expanded result = Expand(width, height, AndBit, XorBit);
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const bool transparent = AndBit(x, y) && !XorBit(x, y);
                    const std::string expected = transparent    ? kTransparentPixel
                                                 : XorBit(x, y) ? kWhitePixel
                                                                : kBlackPixel;
                    ASSERT_EQ(TextOf(result.pixels[static_cast<std::size_t>(y * width + x)]), expected)
                        << width << "x" << height << " at " << x << "," << y;
                    ASSERT_EQ(MaskBit(result.mask, width, x, y), transparent)
                        << width << "x" << height << " at " << x << "," << y;
                }
            }
        }
    }
}

TEST(MonochromeCursor, TheMasksPaddingStaysZeroAndNothingBeyondItIsWritten) {
    for (const int width : kWidths) {
        constexpr int kHeight = 3;
        const Expanded result = Expand(
            width, kHeight, [](int, int) { return true; }, [](int, int) { return false; });
        Bits expected(width, kHeight, 16);
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < width; ++x)
                expected.Set(x, y);
        }
        std::vector<std::uint8_t> wanted = expected.Bytes();
        wanted.insert(wanted.end(), 4, kUntouched);
        EXPECT_EQ(result.mask, wanted) << width;
        EXPECT_EQ(TextOf(result.pixels.back()), "B90 G90 R90 A90") << width;
    }
}

// The padding bits after a row's last pixel are ignored.
TEST(MonochromeCursor, ThePaddingOfTheReadHalvesIsIgnored) {
    constexpr int kWidth = 20, kHeight = 2;
    // AND half transparent throughout, XOR half zero, the last 12 bits of each row of 32 set.
    const std::uint8_t halves[] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                   0x00, 0x00, 0x0F, 0xFF, 0x00, 0x00, 0x0F, 0xFF};
    std::vector<CursorPixel> pixels(kWidth * kHeight, CursorPixel{9, 9, 9, 9});
    std::vector<std::uint8_t> mask(8, 0);
    ExpandMonochrome(halves, kWidth, kHeight, pixels.data(), mask.data());
    for (const CursorPixel& pixel : pixels)
        EXPECT_EQ(TextOf(pixel), kTransparentPixel);
    EXPECT_EQ(mask, (std::vector<std::uint8_t>{0xFF, 0xFF, 0xF0, 0x00, 0xFF, 0xFF, 0xF0, 0x00}));
}

TEST(CursorMask, ItsRowsArePaddedToSixteenBits) {
    for (const auto& [width, bytes] : {std::pair{1, 2U},
                                       {15, 2U},
                                       {16, 2U},
                                       {17, 4U},
                                       {32, 4U},
                                       {33, 6U},
                                       {48, 6U},
                                       {49, 8U},
                                       {64, 8U},
                                       {96, 12U},
                                       {100, 14U}}) {
        EXPECT_EQ(MaskRowBytes(width), bytes) << width;
        EXPECT_EQ(MaskRowBytes(width), Bits(width, 1, 16).RowBytes()) << width;
    }
}

TEST(CursorMask, RowsThatWindowsReturnsArePaddedToThirtyTwoBits) {
    for (const auto& [width, bytes] : {std::pair{1, 4U},
                                       {16, 4U},
                                       {31, 4U},
                                       {32, 4U},
                                       {33, 8U},
                                       {48, 8U},
                                       {64, 8U},
                                       {65, 12U},
                                       {96, 12U},
                                       {100, 16U}}) {
        EXPECT_EQ(DibMaskRowBytes(width), bytes) << width;
    }
}

TEST(BuiltMask, ZeroPixelsAreTransparentAndColourWithoutAlphaBecomesOpaque) {
    std::vector<CursorPixel> pixels = {
        {0, 0, 0, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}, {7, 8, 9, 128}, {0, 0, 0, 255},
    };
    std::vector<std::uint8_t> mask(2, 0);
    BuildMaskFromPixels(pixels.data(), static_cast<int>(pixels.size()), 1, mask.data());
    EXPECT_EQ(mask, (std::vector<std::uint8_t>{0x80, 0x00}));
    EXPECT_EQ(TextOf(pixels[0]), "B0 G0 R0 A0");
    EXPECT_EQ(TextOf(pixels[1]), "B1 G0 R0 A255");
    EXPECT_EQ(TextOf(pixels[2]), "B0 G1 R0 A255");
    EXPECT_EQ(TextOf(pixels[3]), "B0 G0 R1 A255");
    EXPECT_EQ(TextOf(pixels[4]), "B0 G0 R0 A1");
    EXPECT_EQ(TextOf(pixels[5]), "B7 G8 R9 A128");
    EXPECT_EQ(TextOf(pixels[6]), "B0 G0 R0 A255");
}

TEST(BuiltMask, TheFirstPixelIsTheHighestBitAndEveryRowStartsAtAByte) {
    constexpr int kWidth = 18, kHeight = 2;
    std::vector<CursorPixel> pixels(kWidth * kHeight, CursorPixel{5, 5, 5, 255});
    for (const int index : {0, 9, 17, kWidth + 1, kWidth + 16})
        pixels[static_cast<std::size_t>(index)] = {};
    std::vector<std::uint8_t> mask(8, 0);
    BuildMaskFromPixels(pixels.data(), kWidth, kHeight, mask.data());
    EXPECT_EQ(mask, (std::vector<std::uint8_t>{0x80, 0x40, 0x40, 0x00, 0x40, 0x00, 0x80, 0x00}));
}

TEST(BuiltMask, EveryPixelOfEveryWidthHasItsBit) {
    for (const int width : kWidths) {
        for (const int height : {1, 5, 32}) {
            std::vector<CursorPixel> pixels(static_cast<std::size_t>(width * height));
            Bits expected(width, height, 16);
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const bool transparent = AndBit(x, y);
                    if (transparent) expected.Set(x, y);
                    if (!transparent) pixels[static_cast<std::size_t>(y * width + x)] = {1, 2, 3, 4};
                }
            }
            std::vector<std::uint8_t> mask(expected.Bytes().size(), 0);
            BuildMaskFromPixels(pixels.data(), width, height, mask.data());
            EXPECT_EQ(mask, expected.Bytes()) << width << "x" << height;
        }
    }
}
