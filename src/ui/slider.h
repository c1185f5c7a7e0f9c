// The vertical slider control.
#pragma once

#include "win32/platform.h"

struct VerticalSlider {
    int centreX;
    double value;  // 0 to 1
    COLORREF accent;
    bool active;
    const wchar_t* caption;
    const wchar_t* valueText;
    int valueBoxWidth;
};

// Draws track, ticks, fill, thumb, the caption above and the value box below. Coordinates are design units.
void DrawVerticalSlider(HDC dc, const VerticalSlider& slider);

// The grey level of a thumb row, 0 (top) to 27: falls from 89 to 46, then rises to 61.
int ThumbGrey(int row);
