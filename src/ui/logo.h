// The logo, a PNG resource decoded when it is first drawn.
#pragma once

#include "win32/platform.h"

struct IStream;

// Decodes a PNG with the Windows Imaging Component into a 32-bit top-down DIB section of premultiplied BGRA,
// which the caller owns. Null on any failure. COM must be initialised.
HBITMAP DecodePng(IStream* stream, UINT* width, UINT* height);

// Draws the logo as a size x size square around the centre, in design units. Without the resource, or when it
// cannot be decoded, nothing is drawn.
void DrawLogo(HDC dc, int centreX, int centreY, int size);

// Deletes the decoded bitmap.
void FreeLogo();
