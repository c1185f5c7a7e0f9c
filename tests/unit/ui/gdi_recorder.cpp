#include "ui/gdi_recorder.h"

#include "support/seam.h"
#include "ui/gdi_tracker.h"
#include "ui/print.h"

AMBREL_SEAM_SET(gdi_recorder);

namespace {

std::string Rgb(COLORREF colour) {
    return Print("#%02X%02X%02X", GetRValue(colour), GetGValue(colour), GetBValue(colour));
}

std::string Box(LONG left, LONG top, LONG right, LONG bottom) {
    return Print("(%ld,%ld)-(%ld,%ld)", left, top, right, bottom);
}

std::string Box(const RECT& rect) {
    return Box(rect.left, rect.top, rect.right, rect.bottom);
}

std::string Ascii(const wchar_t* text, int length) {
    std::string ascii;
    for (int i = 0; length < 0 ? text[i] != 0 : i < length; ++i) {
        ascii += text[i] < 0x80 ? std::string(1, static_cast<char>(text[i])) : Print("\\u%04x", text[i]);
    }
    return ascii;
}

void Draw(const std::string& line) {
    g_gdi.drawn.push_back(line);
}

// Objects.

HPEN WINAPI FakeCreatePen(int style, int width, COLORREF colour) {
    std::string name = style == PS_NULL ? "none" : Print("%d ", width) + Rgb(colour);
    if (style != PS_NULL && style != PS_SOLID) name += Print(" style %d", style);
    return reinterpret_cast<HPEN>(Make(Kind::Pen, name));
}

constexpr char kBrushOfTheContext[] = "brush of the context";

COLORREF WINAPI FakeSetDCBrushColor(HDC dc, COLORREF colour) {
    ContextOf(dc).brushColour = Rgb(colour);
    return 0;
}

// How a brush fills in a context.
std::string FillOf(HDC dc, const std::string& brush) {
    return brush == kBrushOfTheContext ? ContextOf(dc).brushColour : brush;
}

HBRUSH WINAPI FakeCreateSolidBrush(COLORREF colour) {
    return reinterpret_cast<HBRUSH>(Make(Kind::Brush, Rgb(colour)));
}

HRGN WINAPI FakeCreateRectRgn(int left, int top, int right, int bottom) {
    return reinterpret_cast<HRGN>(Make(Kind::Region, "rect " + Box(left, top, right, bottom)));
}

HRGN WINAPI FakeCreateRoundRectRgn(int left, int top, int right, int bottom, int width, int height) {
    return reinterpret_cast<HRGN>(
        Make(Kind::Region, Box(left, top, right, bottom) + Print(" ellipse %dx%d", width, height)));
}

HGDIOBJ WINAPI FakeGetStockObject(int stock) {
    static const std::map<int, std::pair<Kind, const char*>> names = {
        {NULL_BRUSH, {Kind::Brush, "none"}},
        {DC_BRUSH, {Kind::Brush, kBrushOfTheContext}},
        {NULL_PEN, {Kind::Pen, "none"}}};
    const auto found = names.find(stock);
    if (found == names.end()) return nullptr;
    return reinterpret_cast<HGDIOBJ>(Make(found->second.first, found->second.second, true));
}

HGDIOBJ WINAPI FakeSelectObject(HDC dc, HGDIOBJ object) {
    const auto found = g_objects.find(IdOf(object));
    if (found == g_objects.end()) {
        Problem("selects an object that is not there");
        return nullptr;
    }
    std::uintptr_t& slot = ContextOf(dc).selected[found->second.kind];
    const std::uintptr_t previous = slot;
    slot = IdOf(object);
    return reinterpret_cast<HGDIOBJ>(previous);
}

BOOL WINAPI FakeDeleteObject(HGDIOBJ object) {
    const auto found = g_objects.find(IdOf(object));
    if (found == g_objects.end()) {
        Problem("deletes an object that is not there");
        return FALSE;
    }
    if (found->second.lasting) Problem("deletes a lasting object: " + found->second.name);
    for (const auto& [id, context] : g_contexts) {
        for (const auto& [kind, selected] : context.selected) {
            if (selected == IdOf(object)) Problem("deletes a selected object: " + found->second.name);
        }
    }
    if (found->second.kind == Kind::Bitmap) Draw("delete " + found->second.name);
    g_objects.erase(found);
    return TRUE;
}

// Clip.

int WINAPI FakeGetClipRgn(HDC dc, HRGN region) {
    if (ContextOf(dc).clip == "none") return 0;
    g_objects[IdOf(region)].name = ContextOf(dc).clip;
    return 1;
}

int WINAPI FakeSelectClipRgn(HDC dc, HRGN region) {
    ContextOf(dc).clip = region != nullptr ? g_objects[IdOf(region)].name : "none";
    Draw("clip " + ContextOf(dc).clip);
    return COMPLEXREGION;
}

// Shapes.

int WINAPI FakeFillRect(HDC dc, const RECT* rect, HBRUSH brush) {
    if (rect->right > rect->left && rect->bottom > rect->top) {
        Draw("fill " + Box(*rect) + " " + FillOf(dc, g_objects[IdOf(brush)].name));
    }
    return 1;
}

BOOL WINAPI FakeRoundRect(HDC dc, int left, int top, int right, int bottom, int width, int height) {
    Draw("round " + Box(left, top, right, bottom) + Print(" corner %dx%d pen ", width, height) +
         NameOf(dc, Kind::Pen) + " fill " + FillOf(dc, NameOf(dc, Kind::Brush)));
    return TRUE;
}

BOOL WINAPI FakeEllipse(HDC dc, int left, int top, int right, int bottom) {
    Draw("ellipse " + Box(left, top, right, bottom) + " pen " + NameOf(dc, Kind::Pen) + " fill " +
         FillOf(dc, NameOf(dc, Kind::Brush)));
    return TRUE;
}

BOOL WINAPI FakeMoveToEx(HDC dc, int x, int y, LPPOINT) {
    ContextOf(dc).position = {x, y};
    return TRUE;
}

BOOL WINAPI FakeLineTo(HDC dc, int x, int y) {
    POINT& from = ContextOf(dc).position;
    Draw("line " + Box(from.x, from.y, x, y) + " pen " + NameOf(dc, Kind::Pen));
    from = {x, y};
    return TRUE;
}

std::string VertexColour(const TRIVERTEX& vertex) {
    std::string name = Rgb(RGB(vertex.Red >> 8, vertex.Green >> 8, vertex.Blue >> 8));
    if (((vertex.Red | vertex.Green | vertex.Blue) & 0xFF) != 0) name += " and a fraction";
    if (vertex.Alpha != 0xFF00) name += " not opaque";
    return name;
}

BOOL WINAPI FakeGdiGradientFill(HDC, PTRIVERTEX vertices, ULONG count, PVOID mesh, ULONG meshes, ULONG mode) {
    const GRADIENT_RECT rect = *static_cast<const GRADIENT_RECT*>(mesh);
    if (count != 2 || meshes != 1 || rect.UpperLeft > 1 || rect.LowerRight > 1) {
        Problem("a gradient of more than one rectangle");
        return FALSE;
    }
    const TRIVERTEX& a = vertices[rect.UpperLeft];
    const TRIVERTEX& b = vertices[rect.LowerRight];
    Draw("gradient " + Box(a.x, a.y, b.x, b.y) + " " + VertexColour(a) + " to " + VertexColour(b) +
         (mode == GRADIENT_FILL_RECT_V ? "" : " not vertical"));
    return TRUE;
}

BOOL WINAPI FakeDrawIconEx(HDC, int x, int y, HICON icon, int width, int height, UINT step, HBRUSH flicker,
                           UINT flags) {
    Draw("icon " + g_objects[IdOf(icon)].name + Print(" (%d,%d) %dx%d", x, y, width, height) +
         (flags == DI_NORMAL && step == 0 && flicker == nullptr ? "" : " unusual"));
    return TRUE;
}

// Text.

int WINAPI FakeSetBkMode(HDC dc, int mode) {
    ContextOf(dc).transparent = mode == TRANSPARENT;
    return OPAQUE;
}

COLORREF WINAPI FakeSetTextColor(HDC dc, COLORREF colour) {
    ContextOf(dc).textColour = Rgb(colour);
    return 0;
}

int WINAPI FakeDrawTextW(HDC dc, LPCWSTR text, int length, LPRECT rect, UINT format) {
    const std::string written = Ascii(text, length);
    if (written.empty()) return 0;
    std::string line = "text \"" + written + "\" " + NameOf(dc, Kind::Font) + " " + ContextOf(dc).textColour +
                       " " + Box(*rect);
    line += (format & DT_CENTER) != 0 ? " centre" : (format & DT_RIGHT) != 0 ? " right" : " left";
    line += (format & DT_VCENTER) != 0 ? " middle" : (format & DT_BOTTOM) != 0 ? " bottom" : " top";
    if ((format & DT_SINGLELINE) == 0) line += " several lines";
    const UINT known = DT_CENTER | DT_RIGHT | DT_VCENTER | DT_BOTTOM | DT_SINGLELINE | DT_NOPREFIX;
    if ((format & ~known) != 0) line += Print(" flags 0x%X", format & ~known);
    if (!ContextOf(dc).transparent) line += " opaque";
    Draw(line);
    return 1;
}

BOOL WINAPI FakeGetTextExtentPoint32W(HDC dc, LPCWSTR text, int length, LPSIZE size) {
    Draw("measure \"" + Ascii(text, length) + "\" " + NameOf(dc, Kind::Font));
    *size = {g_gdi.textWidth, 18};
    return TRUE;
}

// Contexts and the canvas.

HDC WINAPI FakeCreateCompatibleDC(HDC like) {
    Draw(like == ScreenContext() ? "context like the screen" : "context like another");
    return reinterpret_cast<HDC>(MakeContext());
}

BOOL WINAPI FakeDeleteDC(HDC dc) {
    if (g_contexts[IdOf(dc)].selected != g_contexts[IdOf(dc)].initial) Problem("deletes a context in use");
    Draw("delete context");
    g_contexts.erase(IdOf(dc));
    return TRUE;
}

HBITMAP WINAPI FakeCreateCompatibleBitmap(HDC like, int width, int height) {
    const std::string name = Print("bitmap %dx%d", width, height);
    Draw(name + (like == ScreenContext() ? " like the screen" : " like another"));
    return g_gdi.bitmapsFail ? nullptr : reinterpret_cast<HBITMAP>(Make(Kind::Bitmap, name));
}

int WINAPI FakeSetMapMode(HDC dc, int mode) {
    Draw(Print("map mode %d", mode) + (dc == ScreenContext() ? " of the screen" : ""));
    return MM_TEXT;
}

BOOL WINAPI FakeSetWindowExtEx(HDC, int x, int y, LPSIZE) {
    Draw(Print("window extent %dx%d", x, y));
    return TRUE;
}

BOOL WINAPI FakeSetViewportExtEx(HDC, int x, int y, LPSIZE) {
    Draw(Print("viewport extent %dx%d", x, y));
    return TRUE;
}

BOOL WINAPI FakeSetViewportOrgEx(HDC, int x, int y, LPPOINT) {
    Draw(Print("viewport origin %d,%d", x, y));
    return TRUE;
}

BOOL WINAPI FakeBitBlt(HDC target, int x, int y, int width, int height, HDC source, int sourceX, int sourceY,
                       DWORD operation) {
    Draw("copy " + NameOf(source, Kind::Bitmap) +
         Print(" from (%d,%d) to (%d,%d) %dx%d", sourceX, sourceY, x, y, width, height) +
         (target == ScreenContext() ? "" : " not to the screen") +
         (operation == SRCCOPY ? "" : " not plainly"));
    return TRUE;
}

HDC WINAPI FakeBeginPaint(HWND window, LPPAINTSTRUCT paint) {
    Draw(Print("begin paint %d", static_cast<int>(IdOf(window))));
    if (g_gdi.paintFails) return nullptr;
    paint->hdc = ScreenContext();
    return ScreenContext();
}

BOOL WINAPI FakeValidateRect(HWND window, const RECT* area) {
    Draw(Print("validate %d%s", static_cast<int>(IdOf(window)), area == nullptr ? "" : " part"));
    return TRUE;
}

BOOL WINAPI FakeEndPaint(HWND window, const PAINTSTRUCT* paint) {
    Draw(Print("end paint %d", static_cast<int>(IdOf(window))));
    if (paint->hdc != ScreenContext()) Problem("ends another paint");
    return TRUE;
}

BOOL WINAPI FakeGetClientRect(HWND window, LPRECT rect) {
    Draw(Print("client of %d", static_cast<int>(IdOf(window))));
    *rect = {0, 0, g_gdi.client.cx, g_gdi.client.cy};
    return TRUE;
}

}  // namespace

AMBREL_SEAM(CreatePen, FakeCreatePen);
AMBREL_SEAM(CreateSolidBrush, FakeCreateSolidBrush);
AMBREL_SEAM(SetDCBrushColor, FakeSetDCBrushColor);
AMBREL_SEAM(CreateRectRgn, FakeCreateRectRgn);
AMBREL_SEAM(CreateRoundRectRgn, FakeCreateRoundRectRgn);
AMBREL_SEAM(GetStockObject, FakeGetStockObject);
AMBREL_SEAM(SelectObject, FakeSelectObject);
AMBREL_SEAM(DeleteObject, FakeDeleteObject);
AMBREL_SEAM(GetClipRgn, FakeGetClipRgn);
AMBREL_SEAM(SelectClipRgn, FakeSelectClipRgn);
AMBREL_SEAM(FillRect, FakeFillRect);
AMBREL_SEAM(RoundRect, FakeRoundRect);
AMBREL_SEAM(Ellipse, FakeEllipse);
AMBREL_SEAM(MoveToEx, FakeMoveToEx);
AMBREL_SEAM(LineTo, FakeLineTo);
AMBREL_SEAM(GdiGradientFill, FakeGdiGradientFill);
AMBREL_SEAM(DrawIconEx, FakeDrawIconEx);
AMBREL_SEAM(SetBkMode, FakeSetBkMode);
AMBREL_SEAM(SetTextColor, FakeSetTextColor);
AMBREL_SEAM(DrawTextW, FakeDrawTextW);
AMBREL_SEAM(GetTextExtentPoint32W, FakeGetTextExtentPoint32W);
AMBREL_SEAM(CreateCompatibleDC, FakeCreateCompatibleDC);
AMBREL_SEAM(DeleteDC, FakeDeleteDC);
AMBREL_SEAM(CreateCompatibleBitmap, FakeCreateCompatibleBitmap);
AMBREL_SEAM(SetMapMode, FakeSetMapMode);
AMBREL_SEAM(SetWindowExtEx, FakeSetWindowExtEx);
AMBREL_SEAM(SetViewportExtEx, FakeSetViewportExtEx);
AMBREL_SEAM(SetViewportOrgEx, FakeSetViewportOrgEx);
AMBREL_SEAM(BitBlt, FakeBitBlt);
AMBREL_SEAM(BeginPaint, FakeBeginPaint);
AMBREL_SEAM(EndPaint, FakeEndPaint);
AMBREL_SEAM(ValidateRect, FakeValidateRect);
AMBREL_SEAM(GetClientRect, FakeGetClientRect);
