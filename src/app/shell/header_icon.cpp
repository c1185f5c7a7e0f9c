#include "app/shell/header_icon.h"

#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "res/resource_ids.h"
#include "win32/platform.h"

void RebuildScaledResources() {
    const int size = ScaleByDpi(kHeaderIconUnits);
    HANDLE loaded =
        LoadImageW(g_app.instance, MAKEINTRESOURCEW(IDI_TRAY_ON), IMAGE_ICON, size, size, LR_DEFAULTCOLOR);
    if (loaded == nullptr) return;
    HICON previous = g_app.headerIcon;
    g_app.headerIcon = static_cast<HICON>(loaded);
    if (previous != nullptr) DestroyIcon(previous);
    g_app.scaledResourcesBuilt = true;
}
