#include "app/shell/ensure_tray_icon.h"

#include "app/shell/tray_icon.h"
#include "app/state/app_state.h"

bool EnsureTrayIcon() {
    // TaskbarCreated may arrive during the call to the shell. Its handler then adds the icon, and the shell
    // refuses this one.
    if (!g_app.trayIconAdded && AddTrayIcon()) g_app.trayIconAdded = true;
    return g_app.trayIconAdded;
}
