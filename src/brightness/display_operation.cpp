#include "brightness/display_operation.h"

#include "app/state/messages.h"
#include "brightness/pwm_release.h"

namespace {

// Switching the mode sets every display anyway. It therefore replaces a deferred re-assertion, and a
// re-assertion does not replace it.
void Defer(PwmRequest request) {
    if (request == PwmRequest::None) return;
    if (request == PwmRequest::Reassert && g_app.pwmDeferred != PwmRequest::None) return;
    g_app.pwmDeferred = request;
}

bool TryStart(PwmRequest request) {
    if (g_app.ending) return false;
    if (g_app.pwmOperationRunning || !FinishPwmSafeRelease()) {
        Defer(request);
        return false;
    }
    g_app.pwmOperationRunning = true;
    return true;
}

}  // namespace

DisplayOperation::DisplayOperation(PwmRequest request) : started(TryStart(request)) {}

DisplayOperation::~DisplayOperation() {
    if (!started) return;
    g_app.pwmOperationRunning = false;
    // If a release has ended during the operation, its values are still in the restore record.
    if (g_app.ending) WaitForPwmSafeRelease(0);
    if (g_app.pwmDeferred != PwmRequest::None) PostMessageW(g_app.mainWindow, kMessagePwmSafeDeferred, 0, 0);
    if (g_app.accessibleActions.count != 0) PostMessageW(g_app.mainWindow, kMessageAccessibleActions, 0, 0);
}
