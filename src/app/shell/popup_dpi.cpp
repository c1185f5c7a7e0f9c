#include "app/shell/popup_dpi.h"

#include "app/shell/header_icon.h"
#include "app/state/app_state.h"
#include "win32/system_library.h"

#include <shellscalingapi.h>

namespace {

// 0 on failure.
UINT EffectiveDpiOf(HMONITOR monitor) {
    const SystemLibrary shcore(L"Shcore.dll");
    const auto getDpiForMonitor = shcore.Find<decltype(&GetDpiForMonitor)>("GetDpiForMonitor");
    if (getDpiForMonitor == nullptr) return 0;
    UINT dpiX = 0;
    UINT dpiY = 0;
    if (FAILED(getDpiForMonitor(monitor, MDT_EFFECTIVE_DPI, &dpiX, &dpiY))) return 0;
    return dpiX;
}

}  // namespace

void SetDpi(UINT dpi) {
    const UINT effective = dpi != 0 ? dpi : kDesignDpi;
    if (effective == g_app.dpi && g_app.scaledResourcesBuilt) return;
    g_app.dpi = effective;
    RebuildScaledResources();
}

UINT DpiOfWindow(HWND window) {
    const UINT dpi = window != nullptr ? GetDpiForWindow(window) : 0;
    return dpi != 0 ? dpi : kDesignDpi;
}

void UpdateDpiForMonitor(HWND window, HMONITOR monitor) {
    if (monitor == nullptr) {
        SetDpi(DpiOfWindow(window));
        return;
    }
    const UINT dpi = EffectiveDpiOf(monitor);
    SetDpi(dpi != 0 ? dpi : DpiOfWindow(g_app.mainWindow));
}
