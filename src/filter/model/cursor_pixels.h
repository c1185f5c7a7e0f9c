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

// What a filter makes of each value of the three colour channels.
struct TintTables {
    std::uint8_t red[256];
    std::uint8_t green[256];
    std::uint8_t blue[256];
};

// Bytes in a row of a bitmap mask, padded to 16 bits as CreateBitmap takes it, and of a 1-bit DIB, padded
// to 32.
std::size_t MaskRowBytes(int width);
std::size_t DibMaskRowBytes(int width);

// Factors are 0..1; products are rounded half up.
void FillTintTables(const Rgb& factors, TintTables* tables);

// Recolours the pixels in place. Alpha is left alone, and a pixel of four zero bytes stays as it is.
void TintPixels(CursorPixel* pixels, std::size_t count, const TintTables& tables);

// A monochrome cursor's mask, a top-down 1-bit DIB of width x 2 height, holds its AND half above its XOR
// half. Makes of it opaque black and white pixels and the mask bits of what is transparent. `mask` has height
// rows of MaskRowBytes, all zero on entry.
void ExpandMonochrome(const std::uint8_t* halves, int width, int height, CursorPixel* pixels,
                      std::uint8_t* mask);

// The mask of pixels drawn without one: a pixel of four zero bytes is transparent; one with colour but no
// alpha becomes opaque. `mask` as above.
void BuildMaskFromPixels(CursorPixel* pixels, int width, int height, std::uint8_t* mask);
