// The small kit that the panels draw with: plain GDI on the 320 x 540 canvas of the off-screen buffer.
// Coordinates are design units and scale with the canvas' mapping; GDI objects made for a call are deleted
// before it returns, what was selected before is selected again. A drawing call that fails leaves its part of
// the frame unpainted.
#pragma once

#include "ui/fonts.h"
#include "win32/platform.h"

// A single line of text in a rectangle. `alignment` is DrawTextW's: DT_CENTER | DT_VCENTER and so on.
void DrawLine(HDC dc, FontRole font, COLORREF colour, const RECT& rect, UINT alignment, const wchar_t* text);

constexpr UINT kAlignTopLeft = DT_LEFT | DT_TOP;
constexpr UINT kAlignLeft = DT_LEFT | DT_VCENTER;
constexpr UINT kAlignRight = DT_RIGHT | DT_VCENTER;
constexpr UINT kAlignCentre = DT_CENTER | DT_VCENTER;
constexpr UINT kAlignTopCentre = DT_CENTER | DT_TOP;

// A rectangle in one colour, without an outline.
void FillBox(HDC dc, const RECT& rect, COLORREF colour);

// A rounded outline in a one-unit pen, not filled. `corner` is the width and height of the corner's ellipse.
void OutlineRoundRect(HDC dc, const RECT& rect, int corner, COLORREF colour);

// A solid rounded rectangle with a corner ellipse of 2 x radius; an outline colour of 0 means no outline at
// all, otherwise a one-unit pen.
void FillRoundRect(HDC dc, int x, int y, int width, int height, int radius, COLORREF fill, COLORREF outline);

// A rounded rectangle, filled, with a pen of its own width in the outline colour; 0 units wide means no pen.
void DrawRoundBox(HDC dc, const RECT& rect, int corner, COLORREF fill, int penWidth, COLORREF outline);

// One vertical gradient, the top colour at the top edge.
void FillVerticalGradient(HDC dc, const RECT& rect, COLORREF top, COLORREF bottom);

// The gradient clipped to a rounded rectangle; the clip that was there is put back.
void FillRoundedGradient(HDC dc, const RECT& rect, int radius, COLORREF top, COLORREF bottom);

// A rounded clip for what is drawn next. Clip regions are device pixels whatever the mapping, so the edges
// are scaled here, right and bottom plus 1, the radius to at least 1 pixel.
void ClipToRoundRect(HDC dc, const RECT& rect, int radius);

struct ButtonColours {
    COLORREF ring;
    COLORREF top;
    COLORREF bottom;
    COLORREF outline;
};

// A button's face: a gradient in a rounded outline, and a ring one unit outside.
void DrawButtonSurface(HDC dc, const RECT& button, const ButtonColours& colours);

// A bevel: one-unit lines inside a surface, at top + 1 and bottom - 2, from left + inset to right - inset.
void DrawEdgeLines(HDC dc, const RECT& rect, int inset, COLORREF top, COLORREF bottom);

// A straight line `width` units wide.
void DrawStroke(HDC dc, POINT from, POINT to, int width, COLORREF colour);

// The band behind a panel's header.
void FillHeaderBand(HDC dc);

// The shared header band with the title; gear and dot only when asked for.
void DrawPanelHeader(HDC dc, const wchar_t* subtitle, COLORREF subtitleColour, bool showGear, bool showDot);
