#include "ui/panel_header.h"

#include "ui/canvas.h"
#include "ui/drawing_kit.h"
#include "ui/palette.h"
#include "ui/panel_texts.h"
#include "ui/regions.h"

namespace {

constexpr RECT kHeaderBand = {0, 0, kCanvasWidth, kHeaderHeight};
constexpr RECT kHeaderSubtitle = {42, 36, 250, 52};
constexpr RECT kHeaderDot = {20, 38, 28, 46};
constexpr wchar_t kGearGlyph[] = L"\xE713";

}  // namespace

void FillHeaderBand(HDC dc) {
    FillBox(dc, kHeaderBand, kColourHeader);
}

void DrawPanelHeader(HDC dc, const wchar_t* subtitle, COLORREF subtitleColour, bool showGear, bool showDot) {
    FillHeaderBand(dc);
    DrawTextLine(dc, FontRole::Title, kColourDimmed, kMainTitleRect, kAlignTopLeft, kMainTitle);
    DrawTextLine(dc, FontRole::Small, subtitleColour, kHeaderSubtitle, kAlignTopLeft, subtitle);
    if (showDot) FillEllipse(dc, kHeaderDot, subtitleColour);
    if (showGear) {
        DrawTextLine(dc, FontRole::Glyph, kColourDimmed, RegionRect(Region::Gear), kAlignCentre, kGearGlyph);
    }
}
