#include "app/sent_message.h"

#include "app/state/app_state.h"

bool ShouldPostAgain() {
    if (InSendMessageEx(nullptr) == ISMEX_NOSEND) return false;
    // A box that the window owns disables it.
    return g_app.openNoticeBoxes == 0 && IsWindowEnabled(g_app.mainWindow) != FALSE;
}
