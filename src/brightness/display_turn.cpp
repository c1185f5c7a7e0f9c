#include "brightness/display_turn.h"

#include "app/state/messages.h"
#include "brightness/pwm_release.h"

namespace {

// A switch of the mode asserts or releases the lock on every display: it replaces a re-assertion, and no
// re-assertion replaces it.
void Defer(PwmRequest request) {
    if (request == PwmRequest::None) return;
    if (request == PwmRequest::Reassert && g_app.pwmDeferred != PwmRequest::None) return;
    g_app.pwmDeferred = request;
}

bool TakeTurn(PwmRequest request) {
    if (g_app.ending) return false;
    if (g_app.pwmBusy || !FinishPwmSafeRelease()) {
        Defer(request);
        return false;
    }
    g_app.pwmBusy = true;
    return true;
}

}  // namespace

DisplayTurn::DisplayTurn(PwmRequest request) : granted(TakeTurn(request)) {}

DisplayTurn::~DisplayTurn() {
    if (!granted) return;
    g_app.pwmBusy = false;
    if (g_app.pwmDeferred != PwmRequest::None) PostMessageW(g_app.mainWindow, kMessagePwmSafeDeferred, 0, 0);
}
