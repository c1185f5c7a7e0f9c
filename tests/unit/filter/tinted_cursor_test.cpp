// One tinted copy of a real cursor, as Windows reads it back: pixels, mask, size and hot spot.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "filter/cursor_factory.h"
#include "filter/model/warmth.h"
#include "filter/tinted_cursor.h"
#include "support/gdi_counts.h"

namespace {

constexpr int kSizes[] = {1, 32, 48, 64, 96};

// The settings of the NIGHT button: red alone.
constexpr double kNight = 1.0, kNightBrightness = 0.7;

int Byte(Argb pixel, int shift) {
    return static_cast<int>(pixel >> shift & 0xFF);
}

Argb FromBytes(int alpha, int red, int green, int blue) {
    return static_cast<Argb>(alpha) << 24 | static_cast<Argb>(red) << 16 | static_cast<Argb>(green) << 8 |
           static_cast<Argb>(blue);
}

// The colour that the screen shows for a colour at these settings; the warmth model has its own tests.
Argb Tinted(Argb pixel, double intensity, double brightness) {
    if (pixel == 0) return 0;
    double red = 1.0, green = 1.0, blue = 1.0;
    IntensityToFilterRgb(intensity, &red, &green, &blue);
    const auto scaled = [&](int shift, double factor) {
        return static_cast<int>(std::lround(Byte(pixel, shift) * (factor * brightness)));
    };
    return FromBytes(Byte(pixel, 24), scaled(16, red), scaled(8, green), scaled(0, blue));
}

class TintedCursor : public testing::Test {
protected:
    void SetUp() override { before_ = CountsAfterWarmUp(); }

    void TearDown() override {
        DestroyCreatedCursor(source_);
        DestroyCreatedCursor(tinted_);
        EXPECT_EQ(CurrentGdiCounts(), before_) << "something was kept";
    }

    // On the first use of a cursor Windows creates objects that it keeps for the entire run.
    static GdiCounts CountsAfterWarmUp() {
        HCURSOR source = MakeCursor(PlainPicture(2, 2, 0xFF123456));
        HCURSOR tinted = BuildTintedCursor(source, 0.5, 0.5);
        ReadCursor(tinted);
        DestroyCreatedCursor(source);
        DestroyCreatedCursor(tinted);
        return CurrentGdiCounts();
    }

    // The copy of a cursor of this picture, read back.
    CursorPicture TintedCopy(const CursorPicture& picture, double intensity, double brightness) {
        DestroyCreatedCursor(source_);
        DestroyCreatedCursor(tinted_);
        source_ = MakeCursor(picture);
        EXPECT_NE(source_, nullptr);
        tinted_ = BuildTintedCursor(source_, intensity, brightness);
        EXPECT_NE(tinted_, nullptr);
        EXPECT_NE(tinted_, source_);
        return ReadCursor(tinted_);
    }

    HCURSOR source_ = nullptr;
    HCURSOR tinted_ = nullptr;

private:
    GdiCounts before_ = {};
};

int Noise(int x, int y) {
    return (x * 53 + y * 97 + x * y * 7) & 0xFF;
}

// A cross of opaque colours on a transparent background, without alpha.
CursorPicture WithoutAlpha(int size) {
    CursorPicture picture = PlainPicture(size, size, 0);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const auto i = static_cast<std::size_t>(y * size + x);
            const bool transparent = size > 1 && (x + 2 * y) % 5 == 0;
            picture.mask[i] = transparent;
            if (!transparent) {
                const int red = Noise(x, y), green = Noise(y, x);
                picture.pixels[i] = FromBytes(0, red, green, 255 - (red ^ green));
            }
        }
    }
    return picture;
}

// White and black at every alpha, and opaque colours. Their drawing is exact: each channel is the alpha for
// white and 0 for black.
CursorPicture WithAlpha(int size) {
    CursorPicture picture = PlainPicture(size, size, 0);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const auto i = static_cast<std::size_t>(y * size + x);
            const int alpha = size == 1 ? 200 : Noise(x, y);
            const Argb kinds[] = {FromBytes(alpha, 255, 255, 255), FromBytes(alpha, 0, 0, 0),
                                  FromBytes(255, Noise(y, x), alpha, 255 - alpha)};
            picture.pixels[i] = kinds[(x + y) % 3];
            picture.mask[i] = alpha < 128;
        }
    }
    return picture;
}

Argb Drawn(Argb pixel) {
    const int alpha = Byte(pixel, 24);
    if (alpha == 255) return pixel;
    const int channel = Byte(pixel, 16) == 0 ? 0 : alpha;
    return FromBytes(alpha, channel, channel, channel);
}

void ExpectTinted(const CursorPicture& source, const CursorPicture& result, double intensity,
                  double brightness, bool drawsAlpha) {
    ASSERT_EQ(result.width, source.width);
    ASSERT_EQ(result.height, source.height);
    ASSERT_TRUE(result.coloured);
    EXPECT_EQ(result.mask, source.mask) << "a cursor with colours keeps its own mask";
    for (int y = 0; y < source.height; ++y) {
        for (int x = 0; x < source.width; ++x) {
            const Argb drawn = drawsAlpha ? Drawn(source.PixelAt(x, y)) : source.PixelAt(x, y);
            ASSERT_EQ(result.PixelAt(x, y), Tinted(drawn, intensity, brightness))
                << std::hex << source.PixelAt(x, y) << std::dec << " at " << x << "," << y;
        }
    }
}

}  // namespace

TEST_F(TintedCursor, ACopyOfAnySizeWithoutAlphaHasEachPixelTintedAndTheSameMask) {
    for (const int size : kSizes) {
        const CursorPicture picture = WithoutAlpha(size);
        for (const auto& [intensity, brightness] :
             {std::pair{kNight, kNightBrightness}, {0.5846153846153845, 0.85}, {0.3846153846153846, 1.0}}) {
            SCOPED_TRACE(size);
            ExpectTinted(picture, TintedCopy(picture, intensity, brightness), intensity, brightness, false);
        }
    }
}

TEST_F(TintedCursor, ACopyOfAnySizeWithAlphaHasEachPixelTintedAndTheSameAlpha) {
    for (const int size : kSizes) {
        const CursorPicture picture = WithAlpha(size);
        for (const auto& [intensity, brightness] :
             {std::pair{kNight, kNightBrightness}, {0.5846153846153845, 0.85}, {0.3846153846153846, 1.0}}) {
            SCOPED_TRACE(size);
            ExpectTinted(picture, TintedCopy(picture, intensity, brightness), intensity, brightness, true);
        }
    }
}

TEST_F(TintedCursor, WhiteAtNightIsRed179) {
    EXPECT_EQ(TintedCopy(PlainPicture(32, 32, 0xFFFFFFFF), kNight, kNightBrightness).PixelAt(5, 9),
              0xFFB30000U);
    EXPECT_EQ(TintedCopy(PlainPicture(32, 32, 0x00FFFFFF), kNight, kNightBrightness).PixelAt(5, 9),
              0x00B30000U);
}

TEST_F(TintedCursor, AtNeutralSettingsHasUnchangedColours) {
    const CursorPicture picture = WithoutAlpha(48);
    ExpectTinted(picture, TintedCopy(picture, 0.0, 1.0), 0.0, 1.0, false);
    EXPECT_EQ(TintedCopy(picture, 0.0, 1.0).pixels, picture.pixels);
}

TEST_F(TintedCursor, WithoutBrightnessIsBlackAndKeepsItsShape) {
    const CursorPicture result = TintedCopy(WithAlpha(32), 0.5, 0.0);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x) {
            EXPECT_EQ(result.PixelAt(x, y) & 0xFFFFFFU, 0U);
            EXPECT_EQ(Byte(result.PixelAt(x, y), 24), Byte(WithAlpha(32).PixelAt(x, y), 24));
        }
    }
}

TEST_F(TintedCursor, NeedNotBeSquare) {
    CursorPicture picture = PlainPicture(20, 7, 0xFFFFFFFF);
    picture.pixels[19] = 0xFF0000FF;
    picture.pixels[20] = 0xFF00FF00;
    picture.mask[21] = true;
    ExpectTinted(picture, TintedCopy(picture, 0.5, 0.5), 0.5, 0.5, true);
}

TEST_F(TintedCursor, KeepsItsHotSpotEvenOutsideAndInTheLastPixel) {
    for (const auto& [x, y] :
         {std::pair<DWORD, DWORD>{0, 0}, {3, 5}, {31, 31}, {32, 32}, {40, 7}, {1000, 2000}}) {
        CursorPicture picture = PlainPicture(32, 32, 0xFFFFFFFF);
        picture.hotX = x;
        picture.hotY = y;
        const CursorPicture result = TintedCopy(picture, kNight, kNightBrightness);
        EXPECT_EQ(result.hotX, x);
        EXPECT_EQ(result.hotY, y);
        EXPECT_EQ(result.PixelAt(0, 0), 0xFFB30000U);
    }
}

TEST_F(TintedCursor, DoesNotChangeTheOriginal) {
    const CursorPicture picture = WithoutAlpha(32);
    TintedCopy(picture, kNight, kNightBrightness);
    EXPECT_EQ(ReadCursor(source_).pixels, picture.pixels);
    EXPECT_EQ(ReadCursor(source_).mask, picture.mask);
}

TEST_F(TintedCursor, OutlivesTheOriginal) {
    TintedCopy(PlainPicture(32, 32, 0xFFFFFFFF), kNight, kNightBrightness);
    DestroyCreatedCursor(source_);
    source_ = nullptr;
    EXPECT_EQ(ReadCursor(tinted_).PixelAt(31, 31), 0xFFB30000U);
}

// Classifies the pixels of a tinted copy: transparent, white or black.
TEST_F(TintedCursor, ACopyOfAMonochromeCursorIsWhiteAndBlackOnTransparentInAllFourCombinations) {
    for (const int width : {1, 7, 16, 20, 32, 33, 48, 64, 96}) {
        const int height = width == 1 ? 1 : width - 1;
        CursorPicture picture;
        picture.width = width;
        picture.height = height;
        picture.coloured = false;
        picture.hotX = 4;
        picture.hotY = 300;
        picture.mask.resize(static_cast<std::size_t>(2 * width * height));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                picture.mask[static_cast<std::size_t>(y * width + x)] = (x + y) % 2 != 0;
                picture.mask[static_cast<std::size_t>((y + height) * width + x)] = (x / 2 + y) % 2 != 0;
            }
        }
        const CursorPicture result = TintedCopy(picture, kNight, kNightBrightness);
        ASSERT_EQ(result.width, width);
        ASSERT_EQ(result.height, height);
        ASSERT_TRUE(result.coloured);
        EXPECT_EQ(result.hotX, 4U);
        EXPECT_EQ(result.hotY, 300U);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const bool andBit = picture.MaskAt(x, y), xorBit = picture.MaskAt(x, y + height);
                const bool transparent = andBit && !xorBit;
                EXPECT_EQ(result.MaskAt(x, y), transparent) << width << " at " << x << "," << y;
                EXPECT_EQ(result.PixelAt(x, y), transparent ? 0U
                                                : xorBit    ? 0xFFB30000U
                                                            : 0xFF000000U)
                    << width << " at " << x << "," << y;
            }
        }
    }
}

TEST_F(TintedCursor, ACopyOfACursorCreatedFromTwoPlanesIsTheSame) {
    // 16 pixels wide: one row is opaque white, black, transparent and inverting, four pixels each.
    const std::uint8_t andPlane[] = {0x00, 0xFF}, xorPlane[] = {0xF0, 0x0F};
    source_ = CreateCursor(GetModuleHandleW(nullptr), 2, 0, 16, 1, andPlane, xorPlane);
    ASSERT_NE(source_, nullptr);
    tinted_ = BuildTintedCursor(source_, kNight, kNightBrightness);
    const CursorPicture result = ReadCursor(tinted_);
    ASSERT_EQ(result.width, 16);
    ASSERT_EQ(result.height, 1);
    const Argb kinds[] = {0xFFB30000, 0xFF000000, 0x00000000, 0xFFB30000};
    for (int x = 0; x < 16; ++x) {
        EXPECT_EQ(result.PixelAt(x, 0), kinds[x / 4]) << x;
        EXPECT_EQ(result.MaskAt(x, 0), x / 4 == 2) << x;
    }
    EXPECT_EQ(result.hotX, 2U);
}

TEST_F(TintedCursor, ACopyOfANullCursorIsNull) {
    EXPECT_EQ(BuildTintedCursor(nullptr, kNight, kNightBrightness), nullptr);
}

TEST_F(TintedCursor, ACopyOfADestroyedCursorIsNull) {
    HCURSOR gone = MakeCursor(PlainPicture(32, 32, 0xFFFFFFFF));
    DestroyCreatedCursor(gone);
    EXPECT_EQ(BuildTintedCursor(gone, kNight, kNightBrightness), nullptr);
}

TEST_F(TintedCursor, CanBeTintedAgainWhichCombinesBothTints) {
    TintedCopy(PlainPicture(32, 32, 0xFFFFFFFF), 0.0, 0.5);
    DestroyCreatedCursor(source_);
    source_ = tinted_;
    tinted_ = BuildTintedCursor(source_, 0.0, 0.5);
    EXPECT_EQ(ReadCursor(tinted_).PixelAt(0, 0), 0xFF404040U);
}
