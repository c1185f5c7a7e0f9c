#include "app/shell/tray_icon.h"

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "filter/model/displayed_values.h"
#include "res/resource_ids.h"
#include "win32/format_text.h"

namespace {

constexpr UINT kTrayIconId = 1;

// The shell identifies the icon by window and id, so every call sets them, even one before the icon was
// added.
NOTIFYICONDATAW* IdentifiedData(UINT flags) {
    NOTIFYICONDATAW* data = &g_app.trayIconData;
    data->cbSize = sizeof(*data);
    data->hWnd = g_app.mainWindow;
    data->uID = kTrayIconId;
    data->uFlags = flags;
    return data;
}

HICON IconForState() {
    return LoadIconW(g_app.instance, MAKEINTRESOURCEW(g_app.filterOn ? IDI_TRAY_ON : IDI_TRAY_OFF));
}

}  // namespace

bool AddTrayIcon() {
    NOTIFYICONDATAW* data = IdentifiedData(NIF_MESSAGE | NIF_ICON | NIF_TIP);
    data->uCallbackMessage = kMessageTray;
    data->hIcon = IconForState();
    FormatText(data->szTip, "Ambrel");
    return Shell_NotifyIconW(NIM_ADD, data) != FALSE;
}

void UpdateTrayIcon() {
    NOTIFYICONDATAW* data = IdentifiedData(NIF_ICON | NIF_TIP);
    data->hIcon = IconForState();
    if (g_app.filterOn) {
        FormatText(data->szTip, "Ambrel - ON (%dK, %d%%)", RoundedKelvin(g_app.intensity),
                   TruncatedPercent(g_app.brightness));
    } else {
        FormatText(data->szTip, "Ambrel - OFF");
    }
    Shell_NotifyIconW(NIM_MODIFY, data);
}

void RemoveTrayIcon() {
    Shell_NotifyIconW(NIM_DELETE, &g_app.trayIconData);
}
