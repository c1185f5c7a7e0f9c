// Arithmetic: colours are in range, and the pixels and masks of a cursor of any size stay within their
// arrays.
#include <vector>

#include "filter/model/cursor_pixels.h"
#include "filter/model/warmth.h"
#include "target.h"

namespace {

constexpr int kMaxSide = 70;

bool IsFraction(double value) {
    return value >= 0.0 && value <= 1.0;
}

double AnyNumber(Input* input) {
    const double number = input->Number();
    return (input->Flag() ? -number : number) / (1.0 + input->Number());
}

void CheckColours(Input* input) {
    double red = -1.0;
    double green = -1.0;
    double blue = -1.0;
    const double intensity = AnyNumber(input);
    IntensityToFilterRgb(intensity, &red, &green, &blue);
    CHECK(IsFraction(red) && IsFraction(green) && IsFraction(blue));
    KelvinToRgb(AnyNumber(input), &red, &green, &blue);
    CHECK(red >= 0.0 && red <= 4.0 && green >= 0.0 && green <= 4.0 && blue >= 0.0 && blue <= 4.0);
    CHECK(IntensityToKelvin(intensity) >= 0.0 && IntensityToKelvin(intensity) <= 6500.0);
    CHECK(ClampBrightness(intensity, true) >= 0.0 && ClampBrightness(intensity, false) >= 0.1);
    CHECK(ClampBrightness(intensity, true) <= 1.0);
}

}  // namespace

void FuzzCursorPixels(Input input) {
    CheckColours(&input);
    const Rgb factors = {AnyNumber(&input), AnyNumber(&input), AnyNumber(&input)};
    const int width = 1 + input.Byte() % kMaxSide;
    const int height = 1 + input.Byte() % kMaxSide;
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const std::string bytes = input.Bytes();
    const auto byteAt = [&bytes](std::size_t i) {
        return bytes.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(bytes[i % bytes.size()]);
    };

    TintTables tables;
    BuildTintTables(factors, &tables);
    std::vector<CursorPixel> pixels(count);
    for (std::size_t i = 0; i < count; ++i)
        pixels[i] = {byteAt(4 * i), byteAt(4 * i + 1), byteAt(4 * i + 2), byteAt(4 * i + 3)};
    std::vector<std::uint8_t> mask(MaskRowBytes(width) * static_cast<std::size_t>(height));
    BuildMaskFromPixels(pixels.data(), width, height, mask.data());
    TintPixels(pixels.data(), count, tables);

    std::vector<std::uint8_t> halves(2 * DibMaskRowBytes(width) * static_cast<std::size_t>(height));
    for (std::size_t i = 0; i < halves.size(); ++i)
        halves[i] = byteAt(i);
    std::vector<std::uint8_t> expanded(mask.size());
    ExpandMonochrome(halves.data(), width, height, pixels.data(), expanded.data());
    // A pixel is visible or masked, never both.
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const CursorPixel& pixel = pixels[static_cast<std::size_t>(y * width + x)];
            const std::uint8_t row =
                expanded[MaskRowBytes(width) * static_cast<std::size_t>(y) + static_cast<std::size_t>(x) / 8];
            CHECK(((row >> (7 - x % 8)) & 1) == (pixel.alpha == 0));
        }
    }
}
