#include "app/message_loop.h"

#include "app/state/app_state.h"
#include "app/window_lifetime.h"
#include "store/event_log.h"
#include "win32/platform.h"

// GetMessageW may fail for a moment. If it keeps failing, no message arrives any more, Quit included.
int RunMessageLoop() {
    constexpr int kMaxFailures = 10;  // in a row
    MSG message = {};
    for (int failures = 0; failures < kMaxFailures;) {
        const BOOL result = GetMessageW(&message, nullptr, 0, 0);
        if (result == 0) {
            // Another program can post WM_QUIT, which leaves the window.
            if (!g_app.windowDestroyed) DestroyMainWindow();
            return static_cast<int>(message.wParam);
        }
        if (result < 0) {
            failures += 1;
            continue;
        }
        failures = 0;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    LogEvent("No messages from Windows after %d attempts - ending", kMaxFailures);
    DestroyMainWindow();
    return 1;
}
