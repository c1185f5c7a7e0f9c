#include "app/refresh.h"

#include "app/app_state.h"
#include "app/tray_icon.h"

void RefreshPopupAndTray() {
    if (g_app.mainWindow == nullptr) return;
    InvalidateRect(g_app.mainWindow, nullptr, FALSE);
    UpdateTrayIcon();
}
