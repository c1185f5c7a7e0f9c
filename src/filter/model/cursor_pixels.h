// The pixel work of tinted cursors: pure arithmetic on 32-bit BGRA pixels and 1-bit masks, no handles.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filter/model/warmth.h"

// Four bytes of a 32-bit DIB, in their order in memory.
struct CursorPixel {
    std::uint8_t blue;
    std::uint8_t green;
    std::uint8_t red;
    std::uint8_t alpha;
};
static_assert(sizeof(CursorPixel) == 4);

// The tinted value of each channel value: one lookup table per channel.
struct TintTables {
    std::uint8_t red[256];
    std::uint8_t green[256];
    std::uint8_t blue[256];
};

// Bytes in a row of a bitmap mask (padded to 16 bits, as CreateBitmap expects) and of a 1-bit DIB (padded to
// 32 bits).
std::size_t MaskRowBytes(int width);
std::size_t DibMaskRowBytes(int width);

// Computes the tables. Factors are 0..1; products are rounded half up.
void BuildTintTables(const Rgb& factors, TintTables* tables);

// Recolours the pixels in place. Alpha does not change; a pixel of four zero bytes is skipped.
void TintPixels(CursorPixel* pixels, std::size_t count, const TintTables& tables);

// Converts a monochrome cursor's mask to opaque black and white pixels and a mask of the transparent pixels.
// `halves` is a top-down 1-bit DIB of width x 2 height: the AND half above the XOR half. `mask` has `height`
// rows of MaskRowBytes(width), all zero on entry.
void ExpandMonochrome(const std::uint8_t* halves, int width, int height, CursorPixel* pixels,
                      std::uint8_t* mask);

// Computes the mask of pixels that were drawn without one: a pixel of four zero bytes is transparent; one
// with colour but no alpha becomes opaque. `mask` as in ExpandMonochrome.
void BuildMaskFromPixels(CursorPixel* pixels, int width, int height, std::uint8_t* mask);
