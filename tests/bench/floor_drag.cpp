// Why not less: the colour of the screen is set by one call in either pipeline, and Legacy Mode reads the
// ramp back because Windows may accept a ramp and load a different one. The tip of the icon shows the values.
// The window must be invalidated to be painted once for all steps that are waiting.
#include "floor_drag.h"

#include "floor_cursors.h"

namespace {

void LoadAndReadRamp(WORD (*ramp)[256]) {
    WORD readBack[3][256];
    HDC screen = GetDC(nullptr);
    SetDeviceGammaRamp(screen, ramp);
    GetDeviceGammaRamp(screen, readBack);
    ReleaseDC(nullptr, screen);
}

}  // namespace

NOTIFYICONDATAW FloorIcon(HWND window, HICON icon) {
    NOTIFYICONDATAW data = {};
    data.cbSize = sizeof(data);
    data.hWnd = window;
    data.uID = 1;
    data.uFlags = NIF_ICON | NIF_TIP;
    data.hIcon = icon;
    lstrcpyW(data.szTip, L"Ambrel - ON (4000K, 100%)");
    return data;
}

void FloorDragStep(FloorStep* step) {
    if (step->setMatrix != nullptr) {
        step->setMatrix(step->matrix);
    } else {
        LoadAndReadRamp(step->ramp);
    }
    if (step->cursors != nullptr)
        FloorReplaceCursors(step->cursors, step->cursorIds, step->cursorCount, step->cursorSize);
    InvalidateRect(step->window, nullptr, FALSE);
    Shell_NotifyIconW(NIM_MODIFY, &step->icon);
}
