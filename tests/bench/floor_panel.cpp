// Why not less: the design prescribes every shape, each shape is one call, and its colours, pen and clip are
// calls of their own. The picture is built in memory so that the window never shows a part of it, and its
// mapping mode scales it to the monitor. Pens and clips that were kept between two paints would take memory
// while the window is hidden. program.py compares the picture with the program's.
#include "floor_panel.h"

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 540;
constexpr UINT kCentre = DT_CENTER | DT_VCENTER;
constexpr UINT kLeft = DT_LEFT | DT_VCENTER;

enum Font { kTitle, kCaption, kSmall, kValue, kLabel, kPreset, kToggle, kGlyph, kFontCount };

constexpr struct {
    const wchar_t* face;
    int height, weight;
    DWORD quality, pitch;
} kFonts[kFontCount] = {
    {L"Segoe UI", 14, 900, CLEARTYPE_QUALITY, 0},
    {L"Segoe UI", 17, 900, CLEARTYPE_QUALITY, 0},
    {L"Segoe UI", 12, 700, CLEARTYPE_QUALITY, 0},
    {L"Consolas", 12, 700, CLEARTYPE_QUALITY, FIXED_PITCH | FF_MODERN},
    {L"Segoe UI", 13, 900, CLEARTYPE_QUALITY, 0},
    {L"Segoe UI", 12, 700, ANTIALIASED_QUALITY, 0},
    {L"Segoe UI", 18, 900, ANTIALIASED_QUALITY, 0},
    {L"Segoe MDL2 Assets", 18, 400, CLEARTYPE_QUALITY, 0},
};

HFONT g_fonts[kFontCount];
HICON g_toggleIcon;
HDC g_dc;  // of the picture

constexpr COLORREF Grey(int level) {
    return RGB(level, level, level);
}

void Fill(const RECT& rect, COLORREF colour) {
    SetDCBrushColor(g_dc, colour);
    FillRect(g_dc, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void Text(Font font, COLORREF colour, RECT rect, UINT format, const wchar_t* text) {
    SelectObject(g_dc, g_fonts[font]);
    SetTextColor(g_dc, colour);
    DrawTextW(g_dc, text, -1, &rect, format | DT_SINGLELINE | DT_NOPREFIX);
}

void Round(const RECT& rect, int cornerDiameter) {
    RoundRect(g_dc, rect.left, rect.top, rect.right, rect.bottom, cornerDiameter, cornerDiameter);
}

// Draws with a pen, without filling.
template <typename Draw>
void WithPen(int width, COLORREF colour, Draw draw) {
    HPEN pen = CreatePen(PS_SOLID, width, colour);
    HGDIOBJ before = SelectObject(g_dc, pen);
    draw();
    SelectObject(g_dc, before);
    DeleteObject(pen);
}

void Outline(const RECT& rect, int cornerDiameter, COLORREF colour) {
    SelectObject(g_dc, GetStockObject(NULL_BRUSH));
    WithPen(1, colour, [&] { Round(rect, cornerDiameter); });
}

void BlackBox(const RECT& rect, int cornerDiameter, int width, COLORREF outline) {
    SetDCBrushColor(g_dc, 0);
    SelectObject(g_dc, GetStockObject(DC_BRUSH));
    WithPen(width, outline, [&] { Round(rect, cornerDiameter); });
}

void Line(POINT from, POINT to, int width, COLORREF colour) {
    WithPen(width, colour, [&] {
        MoveToEx(g_dc, from.x, from.y, nullptr);
        LineTo(g_dc, to.x, to.y);
    });
}

void Clip(const RECT& rect, int cornerDiameter) {
    HRGN region = CreateRoundRectRgn(rect.left, rect.top, rect.right + 1, rect.bottom + 1, cornerDiameter,
                                     cornerDiameter);
    SelectClipRgn(g_dc, region);
    DeleteObject(region);
}

TRIVERTEX Vertex(LONG x, LONG y, int grey) {
    const auto level = static_cast<COLOR16>(grey << 8);
    return {x, y, level, level, level, 0xFF00};
}

void Gradient(const RECT& rect, int cornerDiameter, int top, int bottom) {
    TRIVERTEX ends[] = {Vertex(rect.left, rect.top, top), Vertex(rect.right, rect.bottom, bottom)};
    GRADIENT_RECT whole = {0, 1};
    Clip(rect, cornerDiameter);
    GdiGradientFill(g_dc, ends, 2, &whole, 1, GRADIENT_FILL_RECT_V);
    SelectClipRgn(g_dc, nullptr);
}

void Button(const RECT& rect, int ring, int top, int bottom, int outline) {
    Outline({rect.left - 1, rect.top - 1, rect.right + 1, rect.bottom + 1}, 22, Grey(ring));
    Gradient(rect, 20, top, bottom);
    Outline(rect, 20, Grey(outline));
}

void Ticks(int centre) {
    static constexpr int kBottoms[] = {305, 286, 266, 246, 226, 206, 187, 167, 147, 127, 107};
    for (int i = 0; i < 11; ++i) {
        const bool major = i % 5 == 0;
        const int length = major ? 20 : 10;
        const int top = kBottoms[i] - (major ? 1 : 0);
        const COLORREF colour = Grey(major ? 0x64 : 0x28);
        Fill({centre - 45, top, centre - 45 + length, kBottoms[i] + 1}, colour);
        Fill({centre + 45 - length, top, centre + 45, kBottoms[i] + 1}, colour);
    }
}

void Thumb(int centre, int y) {
    static constexpr BYTE kRows[] = {0x59, 0x55, 0x51, 0x4D, 0x49, 0x45, 0x41, 0x3D, 0x39, 0x37,
                                     0x36, 0x35, 0x34, 0x33, 0x33, 0x32, 0x31, 0x30, 0x2F, 0x2E,
                                     0x2E, 0x31, 0x33, 0x35, 0x37, 0x39, 0x3B, 0x3D};
    const RECT thumb = {centre - 26, y - 14, centre + 26, y + 14};
    Clip(thumb, 8);
    for (int row = 0; row < 28; ++row)
        Fill({thumb.left, thumb.top + row, thumb.right, thumb.top + row + 1}, Grey(kRows[row]));
    Fill({centre - 12, y - 1, centre + 12, y + 2}, Grey(0x50));
    SelectClipRgn(g_dc, nullptr);
    Outline(thumb, 8, Grey(0x3C));
}

struct SliderPicture {
    int centre, thumb, boxHalf;
    COLORREF text, box;
    const wchar_t* caption;
    const wchar_t* value;
};

void DrawSlider(const SliderPicture& slider) {
    const int centre = slider.centre;
    BlackBox({centre - 7, 102, centre + 7, 310}, 4, 2, 0);
    SetDCBrushColor(g_dc, Grey(0x1E));
    SelectObject(g_dc, GetStockObject(NULL_PEN));
    Round({centre - 4, 107, centre + 4, 305}, 2);
    Ticks(centre);
    Fill({centre - 4, slider.thumb, centre + 4, 305}, Grey(0x28));
    Thumb(centre, slider.thumb);
    Text(kCaption, slider.text, {centre - 70, 65, centre + 70, 87}, kCentre, slider.caption);
    const RECT box = {centre - slider.boxHalf, 330, centre + slider.boxHalf, 354};
    BlackBox(box, 8, 1, slider.box);
    Text(kValue, slider.text, box, kCentre, slider.value);
}

void DrawCard() {
    const RECT card = {24, 384, 296, 418};
    Gradient(card, 16, 0x16, 0x0C);
    Line({32, 385}, {288, 385}, 1, Grey(0x50));
    Line({32, 416}, {288, 416}, 1, 0);
    Outline(card, 16, Grey(0x6E));
    Text(kLabel, Grey(0xFF), {36, 387, 226, 402}, kLeft, L"PWM-SAFE MODE");
    Text(kSmall, Grey(0x6E), {36, 400, 226, 414}, kLeft, L"DISPLAY ALREADY AT 100%");
    Text(kLabel, Grey(0x66), {234, 384, 284, 418}, DT_RIGHT | DT_VCENTER, L"OFF");
}

void DrawHint() {
    Text(kSmall, Grey(0x1E), {22, 385, 298, 405}, DT_CENTER | DT_TOP,
         L"\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%");
}

void DrawPresets() {
    const RECT day = {30, 429, 110, 465}, evening = {120, 429, 200, 465}, night = {210, 429, 290, 465};
    Button(day, 0x46, 0x46, 0x28, 0x6E);
    Text(kPreset, Grey(0xFF), day, kCentre, L"DAY");
    Button(evening, 0x22, 0x2D, 0x16, 0x37);
    Text(kPreset, Grey(0x66), evening, kCentre, L"EVENING");
    Button(night, 0x22, 0x2D, 0x16, 0x37);
    Text(kPreset, Grey(0x66), night, kCentre, L"NIGHT");
}

// The icon and the label are centred together, so the label is measured.
void DrawPower() {
    const RECT button = {24, 479, 296, 527};
    Button(button, 0x22, 0x26, 0x1A, 0x2D);
    SIZE label = {};
    SelectObject(g_dc, g_fonts[kToggle]);
    GetTextExtentPoint32W(g_dc, L"KIVO", 4, &label);
    const LONG left = button.left + (272 - 22 - 8 - label.cx) / 2;
    DrawIconEx(g_dc, left, 492, g_toggleIcon, 22, 22, 0, nullptr, DI_NORMAL);
    Text(kToggle, Grey(0xFF), {left + 30, button.top, left + 36 + label.cx, button.bottom}, kLeft, L"KIVO");
}

void DrawPanel(bool card) {
    SetBkMode(g_dc, TRANSPARENT);
    Fill({0, 0, kWidth, kHeight}, Grey(0x0D));
    Fill({0, 0, kWidth, 56}, Grey(0x19));
    Text(kTitle, Grey(0x66), {22, 20, 180, 40}, DT_LEFT | DT_TOP, L"AMBREL");
    Text(kGlyph, Grey(0x66), {280, 17, 304, 41}, kCentre, L"\xE713");
    DrawSlider({80, 229, 42, RGB(0xFF, 0, 0), RGB(0xA0, 0, 0), L"WARMTH", L"3,998K"});
    DrawSlider({240, 107, 32, Grey(0xFF), Grey(0x37), L"BRIGHTNESS", L"100%"});
    Line({160, 117}, {160, 295}, 2, Grey(0x1C));
    Fill({0, 374, kWidth, kHeight}, Grey(0x1A));
    Line({0, 374}, {kWidth, 374}, 1, 0);
    card ? DrawCard() : DrawHint();
    DrawPresets();
    DrawPower();
}

}  // namespace

void FloorCreateResources() {
    for (int i = 0; i < kFontCount; ++i) {
        g_fonts[i] = CreateFontW(kFonts[i].height, 0, 0, 0, kFonts[i].weight, FALSE, FALSE, FALSE,
                                 DEFAULT_CHARSET, 0, 0, kFonts[i].quality, kFonts[i].pitch, kFonts[i].face);
    }
    g_toggleIcon = static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(103), IMAGE_ICON, 22, 22, LR_DEFAULTCOLOR));
}

void FloorPaint(HWND window, bool card) {
    PAINTSTRUCT paint;
    HDC windowDc = BeginPaint(window, &paint);
    g_dc = CreateCompatibleDC(windowDc);
    HBITMAP picture = CreateCompatibleBitmap(windowDc, kWidth, kHeight);
    HGDIOBJ before = SelectObject(g_dc, picture);
    SetMapMode(g_dc, MM_ANISOTROPIC);
    SetWindowExtEx(g_dc, kWidth, kHeight, nullptr);
    SetViewportExtEx(g_dc, kWidth, kHeight, nullptr);
    DrawPanel(card);
    SetMapMode(g_dc, MM_TEXT);
    BitBlt(windowDc, 0, 0, kWidth, kHeight, g_dc, 0, 0, SRCCOPY);
    SelectObject(g_dc, before);
    DeleteObject(picture);
    DeleteDC(g_dc);
    EndPaint(window, &paint);
}
