#include "ui/panel_rendering.h"

#include <gtest/gtest.h>

#include <cstring>

#include "app/shell/header_icon.h"
#include "app/state/app_state.h"
#include "support/seam.h"
#include "ui/popup_painter.h"
#include "ui/print.h"
#include "win32/guards.h"

AMBREL_SEAM_SET(panel_rendering);

namespace {

HWND const kWindow = reinterpret_cast<HWND>(0x1234);
SIZE g_client = {};
std::vector<std::string> g_texts;

BOOL WINAPI FakeGetClientRect(HWND window, LPRECT rect) {
    EXPECT_EQ(window, kWindow);
    *rect = {0, 0, g_client.cx, g_client.cy};
    return TRUE;
}

int WINAPI FakeDrawTextW(HDC dc, LPCWSTR text, int, LPRECT, UINT) {
    std::string line;
    for (; *text != 0; ++text)
        line += *text < 0x80 ? static_cast<char>(*text) : '!';
    const COLORREF colour = GetTextColor(dc);
    if (!line.empty()) {
        line += Print(" #%02X%02X%02X", GetRValue(colour), GetGValue(colour), GetBValue(colour));
        g_texts.push_back(line);
    }
    return 1;
}

BOOL WINAPI FakeGetTextExtentPoint32W(HDC, LPCWSTR, int, LPSIZE size) {
    *size = {50, 18};
    return TRUE;
}

HBITMAP MakeBitmap(SIZE size, std::uint32_t** bits) {
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = size.cx;
    info.bmiHeader.biHeight = -size.cy;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    return CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(bits), nullptr, 0);
}

void Reject() {
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = true;
}

void Card(bool on, bool locked, int displays, int at100) {
    g_app.pwmSafe = on;
    g_app.pwmLockConfirmed = locked;
    g_app.pwmTargetsPresent = true;
    g_app.pwmTargetCount = displays;
    g_app.pwmTargetsAt100 = at100;
}

void Settings(bool on) {
    g_app.panel = Panel::Settings;
    g_app.launchAtStart = on;
    g_app.allowExtremeDim = on;
    g_app.useLegacyGamma = on;
}

void On(double intensity, double brightness) {
    g_app.filterOn = true;
    g_app.intensity = intensity;
    g_app.brightness = brightness;
}

}  // namespace

AMBREL_SEAM(GetClientRect, FakeGetClientRect);
AMBREL_SEAM(DrawTextW, FakeDrawTextW);
AMBREL_SEAM(GetTextExtentPoint32W, FakeGetTextExtentPoint32W);

const PanelState kPanelStates[] = {
    {"off", [] {}},
    {"on_day", [] { On(0.3846153846153846, 1.0); }},
    {"on_evening", [] { On(0.5846153846153845, 0.85); }},
    {"on_night", [] { On(1.0, 0.7); }},
    {"on_dim", [] { On(0.0, 0.1); }},
    {"banner_click", [] { Reject(); }},
    {"banner_restart",
     [] {
         Reject();
         g_app.gammaRangeExpanded = true;
     }},
    {"card_off_below", [] { Card(false, false, 2, 1); }},
    {"card_off_at_100", [] { Card(false, false, 2, 2); }},
    {"card_on_locked", [] { Card(true, true, 2, 2); }},
    {"card_on_waiting", [] { Card(true, false, 2, 1); }},
    {"settings_off", [] { Settings(false); }},
    {"settings_on", [] { Settings(true); }},
    {"settings_copied",
     [] {
         Settings(false);
         g_app.copiedUntil = UINT64_MAX;
     }},
};
const std::size_t kPanelStateCount = std::size(kPanelStates);

const PanelState& StateNamed(const std::string& name) {
    for (const PanelState& state : kPanelStates) {
        if (name == state.name) return state;
    }
    ADD_FAILURE() << "no state " << name;
    return kPanelStates[0];
}

Rendering RenderPanel(const PanelState& state, std::uint32_t dpi) {
    g_app = AppState{};
    g_app.mainWindow = kWindow;
    g_app.instance = GetModuleHandleW(nullptr);
    g_app.dpi = dpi;
    RebuildScaledResources();
    state.set();
    g_texts.clear();
    g_client = {MulDiv(320, static_cast<int>(dpi), 96), MulDiv(540, static_cast<int>(dpi), 96)};

    std::uint32_t* bits = nullptr;
    Rendering rendering;
    {
        const OwnedGdi bitmap(MakeBitmap(g_client, &bits));
        const MemoryDc memory(nullptr);
        const SelectedObject selected(memory.dc, bitmap.handle);
        PaintRoot(memory.dc);
        GdiFlush();
        const OwnedGdi clip(CreateRectRgn(0, 0, 0, 0));
        EXPECT_EQ(GetClipRgn(memory.dc, clip.handle), 0) << "no clip is left behind";
        Picture& picture = rendering.picture;
        picture.width = g_client.cx;
        picture.height = g_client.cy;
        picture.pixels.assign(bits, bits + g_client.cx * g_client.cy);
    }
    for (std::uint32_t& pixel : rendering.picture.pixels)
        pixel &= 0xFFFFFF;
    rendering.texts = g_texts;
    DestroyIcon(g_app.headerIcon);
    g_app.headerIcon = nullptr;
    return rendering;
}

void PaintWithoutSize() {
    g_app = AppState{};
    g_app.mainWindow = kWindow;
    g_client = {};
    const MemoryDc memory(nullptr);
    PaintRoot(memory.dc);
}
