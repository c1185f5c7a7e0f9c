#include "app/shell/refresh.h"

#include "app/shell/tray_icon.h"
#include "app/state/app_state.h"

void RefreshPopupAndTray() {
    if (g_app.mainWindow == nullptr) return;
    InvalidateRect(g_app.mainWindow, nullptr, FALSE);
    UpdateTrayIcon();
}
