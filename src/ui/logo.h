// The logo, a PNG resource that is decoded when it is first drawn.
#pragma once

#include "win32/platform.h"

struct IStream;

// Decodes a PNG with the Windows Imaging Component into a 32-bit top-down DIB section of premultiplied BGRA,
// owned by the caller; stores the size in pixels. Null on any failure. COM must be initialised.
HBITMAP DecodePng(IStream* stream, UINT* width, UINT* height);

// Draws the logo as a square of `size` design units around the centre. Draws nothing when the resource is
// missing or cannot be decoded.
void DrawLogo(HDC dc, int centreX, int centreY, int size);

// Deletes the decoded bitmap, if any.
void FreeLogo();
