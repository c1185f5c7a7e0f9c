#include "filter/model/cursor_pixels.h"

namespace {

constexpr CursorPixel kWhite = {255, 255, 255, 255};
constexpr CursorPixel kBlack = {0, 0, 0, 255};

bool HasColour(const CursorPixel& pixel) {
    return pixel.blue != 0 || pixel.green != 0 || pixel.red != 0;
}

std::uint8_t BitOf(int x) {
    return static_cast<std::uint8_t>(0x80 >> (x % 8));
}

bool IsSet(const std::uint8_t* row, int x) {
    return (row[x / 8] & BitOf(x)) != 0;
}

void Set(std::uint8_t* row, int x) {
    row[x / 8] = static_cast<std::uint8_t>(row[x / 8] | BitOf(x));
}

std::uint8_t Scaled(int value, double factor) {
    const double product = value * factor;
    if (product <= 0.0) return 0;
    if (product >= 255.0) return 255;
    return static_cast<std::uint8_t>(product + 0.5);
}

std::size_t Index(int x, int y, int width) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
}

}  // namespace

std::size_t MaskRowBytes(int width) {
    return (static_cast<std::size_t>(width) + 15) / 16 * 2;
}

std::size_t DibMaskRowBytes(int width) {
    return (static_cast<std::size_t>(width) + 31) / 32 * 4;
}

void BuildTintTables(const Rgb& factors, TintTables* tables) {
    for (int value = 0; value < 256; ++value) {
        tables->red[value] = Scaled(value, factors.red);
        tables->green[value] = Scaled(value, factors.green);
        tables->blue[value] = Scaled(value, factors.blue);
    }
}

void TintPixels(CursorPixel* pixels, std::size_t count, const TintTables& tables) {
    for (std::size_t i = 0; i < count; ++i) {
        CursorPixel& pixel = pixels[i];
        if (!HasColour(pixel) && pixel.alpha == 0) continue;
        pixel.blue = tables.blue[pixel.blue];
        pixel.green = tables.green[pixel.green];
        pixel.red = tables.red[pixel.red];
    }
}

void ExpandMonochrome(const std::uint8_t* halves, int width, int height, CursorPixel* pixels,
                      std::uint8_t* mask) {
    const std::size_t rowBytes = DibMaskRowBytes(width);
    const std::uint8_t* andRow = halves;
    const std::uint8_t* xorRow = halves + rowBytes * static_cast<std::size_t>(height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool white = IsSet(xorRow, x);
            if (IsSet(andRow, x) && !white) {
                pixels[Index(x, y, width)] = {};
                Set(mask, x);
            } else {
                pixels[Index(x, y, width)] = white ? kWhite : kBlack;
            }
        }
        andRow += rowBytes;
        xorRow += rowBytes;
        mask += MaskRowBytes(width);
    }
}

void BuildMaskFromPixels(CursorPixel* pixels, int width, int height, std::uint8_t* mask) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            CursorPixel& pixel = pixels[Index(x, y, width)];
            if (pixel.alpha != 0) continue;
            if (HasColour(pixel)) {
                pixel.alpha = 255;
            } else {
                Set(mask, x);
            }
        }
        mask += MaskRowBytes(width);
    }
}
