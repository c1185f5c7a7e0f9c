#include "app/pending_input.h"

#include "app/state/app_state.h"
#include "win32/platform.h"

namespace {

// Bounds the loop: a drag produces new moves as long as the mouse moves.
constexpr int kMaxPendingMessages = 100;

}  // namespace

void HandlePendingPopupInput() {
    HWND window = g_app.mainWindow;
    for (int handled = 0; handled < kMaxPendingMessages; ++handled) {
        // With a null window PeekMessage would retrieve the input of every window of the thread.
        if (window == nullptr || g_app.mainWindow != window) return;
        MSG message = {};
        if (!PeekMessageW(&message, window, WM_MOUSEFIRST, WM_MOUSELAST, PM_REMOVE)) return;
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DispatchMessageW(&message);
    }
}
