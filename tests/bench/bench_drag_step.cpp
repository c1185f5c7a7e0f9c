// Compares one step of a slider drag with the platform calls that it requires.
#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/filter.h"
#include "filter/model/warmth.h"
#include "stopwatch.h"
#include "ui/popup_input.h"

namespace {

struct Ramp {
    WORD channels[3][256];
};

Ramp g_ramp;

void FillIdentity() {
    for (auto& channel : g_ramp.channels) {
        for (int i = 0; i < 256; ++i)
            channel[i] = static_cast<WORD>(i * 257);
    }
}

void BareRamp(int) {
    HDC screen = GetDC(nullptr);
    SetDeviceGammaRamp(screen, &g_ramp);
    Ramp readBack = {};
    GetDeviceGammaRamp(screen, &readBack);
    ReleaseDC(nullptr, screen);
}

// The minimum of calls per cursor: draw it into a bitmap, create a cursor from the bitmap, set it.
void BareCursor(HCURSOR cursor, DWORD id) {
    ICONINFO info = {};
    GetIconInfo(cursor, &info);
    BITMAPINFO picture = {};
    picture.bmiHeader = {sizeof(BITMAPINFOHEADER), 32, -32, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    HDC screen = GetDC(nullptr);
    void* pixels = nullptr;
    HBITMAP colour = CreateDIBSection(screen, &picture, DIB_RGB_COLORS, &pixels, nullptr, 0);
    HDC memory = CreateCompatibleDC(screen);
    HGDIOBJ previous = SelectObject(memory, colour);
    DrawIconEx(memory, 0, 0, cursor, 32, 32, 0, nullptr, DI_NORMAL);
    SelectObject(memory, previous);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    ICONINFO tinted = info;
    tinted.hbmColor = colour;
    SetSystemCursor(static_cast<HCURSOR>(CreateIconIndirect(&tinted)), id);
    DeleteObject(colour);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
}

// The ids of the system cursors.
constexpr DWORD kCursorIds[kSystemCursorCount] = {32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642,
                                                  32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651};

void BareCursors(int) {
    for (int i = 0; i < kSystemCursorCount; ++i) {
        if (g_app.baseCursors[i] != nullptr) BareCursor(g_app.baseCursors[i], kCursorIds[i]);
    }
}

void Tint(int i) {
    g_app.intensity = 0.3 + 0.01 * (i % 10);
    TintSystemCursors();
}

// Each step changes the warmth enough to tint the cursors again.
void BareStep(int i) {
    BareRamp(i);
    BareCursors(i);
}

void BareStepAndRefresh(int i) {
    BareStep(i);
    InvalidateRect(g_app.mainWindow, nullptr, FALSE);
    Shell_NotifyIconW(NIM_MODIFY, &g_app.trayIconData);
}

void Apply(int i) {
    g_app.intensity = 0.3 + 0.01 * (i % 10);
    ApplyFilter();
}

void DragStep(int i) {
    OnMouseMove(0, 200 - i % 50);
}

// Few repeats, because Wine leaks the cursors that SetSystemCursor replaces.
constexpr int kRepeats = 5;

volatile double g_sink;

void Model(int i) {
    double red = 1.0, green = 1.0, blue = 1.0;
    IntensityToFilterRgb(0.001 * (i % 1000), &red, &green, &blue);
    g_sink = red + green + blue;
}

void CopyRamp(int i) {
    static Ramp copy;
    g_ramp.channels[0][i % 256] = static_cast<WORD>(i);
    copy = g_ramp;
    g_sink = copy.channels[2][i % 256];
}

}  // namespace

int main() {
    FillIdentity();
    g_app.instance = GetModuleHandleW(nullptr);
    g_app.mainWindow =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 320, 540, nullptr, nullptr, nullptr, nullptr);
    g_app.filterOn = true;
    g_app.useLegacyGamma = true;
    Compare("model: colour of one warmth / copy of a ramp", Model, CopyRamp, 20000);
    FillIdentity();
    Apply(1);  // Creates the cursor copies that the bare calls use too.
    Compare("cursors: all sixteen / bare calls", Tint, BareCursors, kRepeats);
    Compare("Legacy Mode: ApplyFilter / bare calls", Apply, BareStep, kRepeats);
    g_app.dragSlider = Slider::Warmth;
    g_app.dragStartY = 200;
    g_app.dragStartValue = 0.3;
    Compare("Legacy Mode: a drag step / bare calls", DragStep, BareStepAndRefresh, kRepeats);
    RestoreSystemCursors();
    BareRamp(0);
    return 0;
}
