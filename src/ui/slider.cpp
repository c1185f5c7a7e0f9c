#include "ui/slider.h"

#include "ui/drawing_kit.h"
#include "ui/palette.h"
#include "ui/panel_texts.h"
#include "ui/slider_geometry.h"
#include "win32/guards.h"

namespace {

constexpr int kTickCount = 11;
constexpr int kTickOuterOffset = 45;  // from the centre to the outer end of a tick
constexpr int kThumbRows = 28;
constexpr int kThumbAboveCentre = 14;

int OffsetOf(double fraction) {
    return static_cast<int>(fraction * kSliderTravel);
}

void DrawTrack(HDC dc, int cx) {
    DrawRoundBox(dc, {cx - 7, 102, cx + 7, 310}, 4, kColourBlack, 2, kColourBlack);
    DrawRoundBox(dc, {cx - 4, kSliderBottom - kSliderTravel, cx + 4, kSliderBottom}, 2, kColourGroove, 0, 0);
}

// Draws the tick on both sides of the groove.
void DrawTick(HDC dc, int cx, int top, int bottom, int length, COLORREF colour) {
    FillBox(dc, {cx - kTickOuterOffset, top, cx - kTickOuterOffset + length, bottom}, colour);
    FillBox(dc, {cx + kTickOuterOffset - length, top, cx + kTickOuterOffset, bottom}, colour);
}

void DrawTicks(HDC dc, int cx) {
    for (int i = 0; i < kTickCount; ++i) {
        const int y = kSliderBottom - OffsetOf(i / 10.0);
        if (i % 5 == 0) {
            DrawTick(dc, cx, y - 1, y + 1, 20, kColourMajorTick);
        } else {
            DrawTick(dc, cx, y, y + 1, 10, kColourMinorTick);
        }
    }
}

void DrawThumb(HDC dc, int cx, int centreY, COLORREF bar) {
    const RECT thumb = {cx - kThumbHalfWidth, centreY - kThumbAboveCentre, cx + kThumbHalfWidth,
                        centreY - kThumbAboveCentre + kThumbRows};
    ClipToRoundRect(dc, thumb, 4);
    for (int row = 0; row < kThumbRows; ++row) {
        const int grey = ThumbGrey(row);
        FillBox(dc, {thumb.left, thumb.top + row, thumb.right, thumb.top + row + 1}, RGB(grey, grey, grey));
    }
    FillBox(dc, {cx - 12, centreY - 1, cx + 12, centreY + 2}, bar);
    SelectClipRgn(dc, nullptr);
    OutlineRoundRect(dc, thumb, 8, kColourThumbOutline);
}

}  // namespace

int ThumbGrey(int row) {
    const float t = static_cast<float>(row) / 28.0F;
    if (t < 0.3F) return static_cast<int>((t / 0.3F) * 56.0F + (1.0F - t / 0.3F) * 89.0F);
    if (t < 0.7F) {
        const float u = (t - 0.3F) / 0.4F;
        return static_cast<int>(u * 46.0F + (1.0F - u) * 56.0F);
    }
    const float u = (t - 0.7F) / 0.3F;
    return static_cast<int>(u * 64.0F + (1.0F - u) * 46.0F);
}

void DrawVerticalSlider(HDC dc, const VerticalSlider& slider) {
    const int cx = slider.centreX;
    const int y = kSliderBottom - OffsetOf(slider.value);
    const bool red = slider.accent == kColourRed;
    const COLORREF textColour = red ? kColourRed : kColourText;

    DrawTrack(dc, cx);
    DrawTicks(dc, cx);
    FillBox(dc, {cx - 4, y, cx + 4, kSliderBottom}, slider.active ? slider.accent : kColourFillOff);
    DrawThumb(dc, cx, y, slider.active ? slider.accent : kColourThumbBarOff);
    DrawTextLine(dc, FontRole::Caption, textColour, SliderCaptionRect(cx), kAlignCentre, slider.caption);

    const int left = cx - slider.valueBoxWidth / 2;
    const RECT box = {left, 330, left + slider.valueBoxWidth, 354};
    DrawRoundBox(dc, box, 8, kColourBlack, 1, red ? kColourValueBoxRed : kColourValueBox);
    DrawTextLine(dc, FontRole::Value, textColour, box, kAlignCentre, slider.valueText);
}
