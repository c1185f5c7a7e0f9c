// The vertical slider control.
#pragma once

#include "win32/platform.h"

struct SliderLook {
    int centreX;
    double value;  // 0..1
    COLORREF accent;
    bool active;
    const wchar_t* caption;
    const wchar_t* valueText;
    int valueBoxWidth;
};

// Track, ticks, fill, thumb, caption above and value box below. Coordinates as in the drawing kit.
void DrawVerticalSlider(HDC dc, const SliderLook& look);

// The grey of the thumb's row 0..27, from its top: 89 at the top, a dip to 46, and up again.
int ThumbGrey(int row);
