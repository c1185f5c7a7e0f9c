// One step of a slider's drag against the platform calls that it cannot do without.
#include "app/app_state.h"
#include "filter/filter.h"
#include "filter/warmth.h"
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

void BareRampAndRefresh(int i) {
    BareRamp(i);
    InvalidateRect(g_app.mainWindow, nullptr, FALSE);
    Shell_NotifyIconW(NIM_MODIFY, &g_app.trayIconData);
}

void Apply(int i) {
    g_app.intensity = 0.3 + 0.001 * (i % 100);
    ApplyFilter();
}

void DragStep(int i) {
    OnMouseMove(0, 200 - i % 50);
}

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
    Compare("Legacy Mode: ApplyFilter / bare ramp calls", Apply, BareRamp, 20);
    g_app.dragSlider = Slider::Warmth;
    g_app.dragStartY = 200;
    g_app.dragStartValue = 0.3;
    Compare("Legacy Mode: a drag step / bare calls", DragStep, BareRampAndRefresh, 20);
    BareRamp(0);
    return 0;
}
