// Bitmaps whose pixels the program reads or writes.
#pragma once

#include "win32/platform.h"

// The header of an uncompressed DIB whose first row is the top one. `bits` is the number per pixel.
inline BITMAPINFOHEADER TopDownHeader(LONG width, LONG height, WORD bits) {
    BITMAPINFOHEADER header = {};
    header.biSize = sizeof(header);
    header.biWidth = width;
    header.biHeight = -height;
    header.biPlanes = 1;
    header.biBitCount = bits;
    header.biCompression = BI_RGB;
    return header;
}
