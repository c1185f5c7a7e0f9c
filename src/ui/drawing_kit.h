// Drawing primitives of the panels: plain GDI on the 320 x 540 canvas of the off-screen buffer. Coordinates
// are design units, scaled by the mapping mode of the canvas. Each call deletes the GDI objects that it
// creates and restores the previous selection. When GDI fails, that part of the frame stays unpainted.
#pragma once

#include "ui/fonts.h"
#include "win32/platform.h"

// Draws a single line of text in a rectangle. `alignment` is one of kAlign... below, DrawTextW's DT_ flags.
void DrawTextLine(HDC dc, FontRole font, COLORREF colour, const RECT& rect, UINT alignment,
                  const wchar_t* text);

constexpr UINT kAlignTopLeft = DT_LEFT | DT_TOP;
constexpr UINT kAlignLeft = DT_LEFT | DT_VCENTER;
constexpr UINT kAlignRight = DT_RIGHT | DT_VCENTER;
constexpr UINT kAlignCentre = DT_CENTER | DT_VCENTER;
constexpr UINT kAlignTopCentre = DT_CENTER | DT_TOP;

// Fills a rectangle with one colour, without an outline.
void FillBox(HDC dc, const RECT& rect, COLORREF colour);

// Fills an ellipse in a rectangle with one colour, without an outline.
void FillEllipse(HDC dc, const RECT& rect, COLORREF colour);

// Draws the outline of a rounded rectangle with a one-unit pen, unfilled. `cornerDiameter` is the width and
// height of the corner ellipse; elsewhere `radius` is half of it.
void OutlineRoundRect(HDC dc, const RECT& rect, int cornerDiameter, COLORREF colour);

// Draws a filled rounded rectangle. The corner ellipse is 2 x radius wide and high. The outline is one unit
// wide; an outline colour of 0 means no outline.
void FillRoundRect(HDC dc, int x, int y, int width, int height, int radius, COLORREF fill, COLORREF outline);

// Draws a filled rounded rectangle with an outline `penWidth` units wide; 0 means no outline.
void DrawRoundBox(HDC dc, const RECT& rect, int cornerDiameter, COLORREF fill, int penWidth,
                  COLORREF outline);

// Fills a rectangle with a vertical gradient from `top` to `bottom`.
void FillVerticalGradient(HDC dc, const RECT& rect, COLORREF top, COLORREF bottom);

// Fills a rounded rectangle with a vertical gradient and restores the previous clip region.
void FillRoundedGradient(HDC dc, const RECT& rect, int radius, COLORREF top, COLORREF bottom);

// Clips further drawing to a rounded rectangle. Clip regions are in device pixels in every mapping mode, so
// the edges are scaled here, right and bottom plus 1 pixel, the radius to at least 1 pixel.
void ClipToRoundRect(HDC dc, const RECT& rect, int radius);

struct ButtonColours {
    COLORREF ring;
    COLORREF top;
    COLORREF bottom;
    COLORREF outline;
};

// Draws a button's surface: a gradient in a rounded outline, and a ring one unit outside.
void DrawButtonSurface(HDC dc, const RECT& button, const ButtonColours& colours);

// Draws a bevel: one-unit horizontal lines at top + 1 and bottom - 2, from left + inset to right - inset.
void DrawEdgeLines(HDC dc, const RECT& rect, int inset, COLORREF top, COLORREF bottom);

// Draws a straight line `width` units wide.
void DrawStroke(HDC dc, POINT from, POINT to, int width, COLORREF colour);
