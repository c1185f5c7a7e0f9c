// Creates real cursors from given pixels and reads real cursors back. Uses no seam.
#pragma once

#include <cstdint>
#include <vector>

#include "win32/platform.h"

// 0xAARRGGBB.
using Argb = std::uint32_t;

struct CursorPicture {
    int width = 0;
    int height = 0;
    DWORD hotX = 0;
    DWORD hotY = 0;
    bool coloured = true;
    std::vector<Argb> pixels;        // empty for a monochrome cursor
    std::vector<std::uint8_t> mask;  // 1: the screen shows through. Of a monochrome cursor first the AND and
                                     // then the XOR half

    Argb PixelAt(int x, int y) const;
    bool MaskAt(int x, int y) const;
};

// A picture of one colour, opaque throughout.
CursorPicture PlainPicture(int width, int height, Argb colour);

// Null on failure.
HCURSOR MakeCursor(const CursorPicture& picture);

// Width 0 if the cursor cannot be read.
CursorPicture ReadCursor(HCURSOR cursor);

// The pixels that Windows draws for the cursor on an empty bitmap.
std::vector<Argb> DrawnPixels(HCURSOR cursor, int width, int height);

void DestroyCreatedCursor(HCURSOR cursor);
