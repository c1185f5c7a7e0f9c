#include "app/accessibility.h"

#include "app/sent_message.h"
#include "app/session_end.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "ui/accessible_actions.h"
#include "ui/accessible_host.h"

LRESULT OnGetObject(HWND window, WPARAM wParam, LPARAM lParam) {
    // The object id has 32 bits; the upper half of lParam may or may not repeat its sign.
    if (static_cast<DWORD>(lParam) == static_cast<DWORD>(OBJID_CLIENT)) {
        const LRESULT answer = AnswerAccessibilityRequest(wParam);
        if (answer != 0) return answer;
    }
    return DefWindowProcW(window, WM_GETOBJECT, wParam, lParam);
}

void OnAccessibleActions() {
    // Any program can post the message.
    if (g_app.accessibleActions.count == 0) return;
    if (ShouldPostAgain()) {
        PostMessageW(g_app.mainWindow, kMessageAccessibleActions, 0, 0);
        return;
    }
    ContinueSession();
    PerformAccessibleActions();
}
