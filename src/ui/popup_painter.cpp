#include "ui/popup_painter.h"

#include "app/state/app_state.h"
#include "ui/canvas.h"
#include "ui/drawing_kit.h"
#include "ui/main_panel.h"
#include "ui/palette.h"
#include "ui/settings_panel.h"
#include "win32/guards.h"

namespace {

void PaintBuffered(HDC windowDc, int width, int height) {
    const MemoryDc memory(windowDc);
    // Compatible with the window's DC: a bitmap compatible with the new memory DC would be monochrome.
    const OwnedGdi bitmap(CreateCompatibleBitmap(windowDc, width, height));
    const SelectedObject selected(memory.dc, bitmap.handle);
    PaintRoot(memory.dc);
    SetMapMode(memory.dc, MM_TEXT);
    BitBlt(windowDc, 0, 0, width, height, memory.dc, 0, 0, SRCCOPY);
}

}  // namespace

void PaintPopup(HWND window) {
    PAINTSTRUCT paint = {};
    HDC windowDc = BeginPaint(window, &paint);
    if (windowDc == nullptr) {
        // Windows sends WM_PAINT again immediately as long as a part of the window is invalid.
        ValidateRect(window, nullptr);
        return;
    }
    RECT client = {};
    GetClientRect(window, &client);
    PaintBuffered(windowDc, client.right, client.bottom);
    EndPaint(window, &paint);
}

void PaintRoot(HDC dc) {
    RECT client = {};
    GetClientRect(g_app.mainWindow, &client);
    SetMapMode(dc, MM_ANISOTROPIC);
    SetWindowExtEx(dc, kCanvasWidth, kCanvasHeight, nullptr);
    SetViewportExtEx(dc, client.right, client.bottom, nullptr);
    SetViewportOrgEx(dc, 0, 0, nullptr);
    FillBox(dc, {0, 0, kCanvasWidth, kCanvasHeight}, kColourBackground);
    if (g_app.panel == Panel::Settings) {
        DrawSettingsPanel(dc);
    } else {
        DrawMainPanel(dc);
    }
}
