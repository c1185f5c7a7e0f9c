#include "app/shell/ensure_tray_icon.h"

#include "app/shell/tray_icon.h"
#include "app/state/app_state.h"

bool EnsureTrayIcon() {
    // The taskbar may announce itself while the shell is asked: the icon is there then, and refused here.
    if (!g_app.trayIconAdded && AddTrayIcon()) g_app.trayIconAdded = true;
    return g_app.trayIconAdded;
}
