#include "ui/drawing_kit.h"

#include <algorithm>

#include "app/state/dpi.h"
#include "win32/guards.h"

namespace {

// The channels of a gradient vertex are 16 bits wide, with the colour in the upper 8 bits.
TRIVERTEX Vertex(LONG x, LONG y, COLORREF colour) {
    TRIVERTEX vertex = {};
    vertex.x = x;
    vertex.y = y;
    vertex.Red = static_cast<COLOR16>(GetRValue(colour) << 8);
    vertex.Green = static_cast<COLOR16>(GetGValue(colour) << 8);
    vertex.Blue = static_cast<COLOR16>(GetBValue(colour) << 8);
    vertex.Alpha = 0xFF00;
    return vertex;
}

// The context's own brush, which needs no object for each colour. Valid until the next call with that
// context.
HBRUSH BrushOf(HDC dc, COLORREF colour) {
    SetDCBrushColor(dc, colour);
    return static_cast<HBRUSH>(GetStockObject(DC_BRUSH));
}

}  // namespace

void DrawTextLine(HDC dc, FontRole font, COLORREF colour, const RECT& rect, UINT alignment,
                  const wchar_t* text) {
    const SelectedObject selectedFont(dc, FontFor(font));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, colour);
    RECT box = rect;
    DrawTextW(dc, text, -1, &box, alignment | DT_SINGLELINE | DT_NOPREFIX);
}

void FillBox(HDC dc, const RECT& rect, COLORREF colour) {
    FillRect(dc, &rect, BrushOf(dc, colour));
}

void FillEllipse(HDC dc, const RECT& rect, COLORREF colour) {
    const SelectedObject selectedBrush(dc, BrushOf(dc, colour));
    const SelectedObject selectedPen(dc, GetStockObject(NULL_PEN));
    Ellipse(dc, rect.left, rect.top, rect.right, rect.bottom);
}

void OutlineRoundRect(HDC dc, const RECT& rect, int cornerDiameter, COLORREF colour) {
    const OwnedGdi pen(CreatePen(PS_SOLID, 1, colour));
    const SelectedObject selectedPen(dc, pen.handle);
    const SelectedObject selectedBrush(dc, GetStockObject(NULL_BRUSH));
    RoundRect(dc, rect.left, rect.top, rect.right, rect.bottom, cornerDiameter, cornerDiameter);
}

void DrawRoundBox(HDC dc, const RECT& rect, int cornerDiameter, COLORREF fill, int penWidth,
                  COLORREF outline) {
    const OwnedGdi pen(penWidth > 0 ? CreatePen(PS_SOLID, penWidth, outline) : nullptr);
    const SelectedObject selectedBrush(dc, BrushOf(dc, fill));
    const SelectedObject selectedPen(dc, penWidth > 0 ? pen.handle : GetStockObject(NULL_PEN));
    RoundRect(dc, rect.left, rect.top, rect.right, rect.bottom, cornerDiameter, cornerDiameter);
}

void FillRoundRect(HDC dc, int x, int y, int width, int height, int radius, COLORREF fill, COLORREF outline) {
    const RECT rect = {x, y, x + width, y + height};
    DrawRoundBox(dc, rect, 2 * radius, fill, outline != 0 ? 1 : 0, outline);
}

void FillVerticalGradient(HDC dc, const RECT& rect, COLORREF top, COLORREF bottom) {
    TRIVERTEX corners[] = {Vertex(rect.left, rect.top, top), Vertex(rect.right, rect.bottom, bottom)};
    GRADIENT_RECT whole = {0, 1};
    // msimg32's GradientFill is this call. gdi32 is a known DLL, which is always loaded from System32.
    GdiGradientFill(dc, corners, 2, &whole, 1, GRADIENT_FILL_RECT_V);
}

void ClipToRoundRect(HDC dc, const RECT& rect, int radius) {
    const int ellipse = 2 * std::max(1, ScaleByDpi(radius));
    const OwnedGdi region(CreateRoundRectRgn(ScaleByDpi(rect.left), ScaleByDpi(rect.top),
                                             ScaleByDpi(rect.right) + 1, ScaleByDpi(rect.bottom) + 1, ellipse,
                                             ellipse));
    SelectClipRgn(dc, region.handle);
}

void FillRoundedGradient(HDC dc, const RECT& rect, int radius, COLORREF top, COLORREF bottom) {
    const SavedClip clip(dc);
    ClipToRoundRect(dc, rect, radius);
    FillVerticalGradient(dc, rect, top, bottom);
}

void DrawStroke(HDC dc, POINT from, POINT to, int width, COLORREF colour) {
    const OwnedGdi pen(CreatePen(PS_SOLID, width, colour));
    const SelectedObject selectedPen(dc, pen.handle);
    MoveToEx(dc, from.x, from.y, nullptr);
    LineTo(dc, to.x, to.y);
}

void DrawButtonSurface(HDC dc, const RECT& button, const ButtonColours& colours) {
    RECT ring = button;
    InflateRect(&ring, 1, 1);
    OutlineRoundRect(dc, ring, 22, colours.ring);
    FillRoundedGradient(dc, button, 10, colours.top, colours.bottom);
    OutlineRoundRect(dc, button, 20, colours.outline);
}

void DrawEdgeLines(HDC dc, const RECT& rect, int inset, COLORREF top, COLORREF bottom) {
    const LONG left = rect.left + inset;
    const LONG right = rect.right - inset;
    DrawStroke(dc, {left, rect.top + 1}, {right, rect.top + 1}, 1, top);
    DrawStroke(dc, {left, rect.bottom - 2}, {right, rect.bottom - 2}, 1, bottom);
}
