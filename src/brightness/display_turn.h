// Turns on the displays. One operation on them runs at a time: while a built-in panel is waited for, COM
// dispatches timers, sent messages and incoming calls, and one of these may ask for the next operation.
#pragma once

#include "app/state/app_state.h"

// A turn for one operation. It is not granted while another operation or the release at a session's end is
// under way, nor after the window's or the session's end has begun. A request that is refused because the
// displays are busy waits in the one slot for it (pwmDeferred), and kMessagePwmSafeDeferred is posted when it
// can be performed. Window thread.
struct [[nodiscard]] DisplayTurn {
    const bool granted;

    explicit DisplayTurn(PwmRequest request = PwmRequest::None);
    ~DisplayTurn();
    DisplayTurn(const DisplayTurn&) = delete;
    DisplayTurn& operator=(const DisplayTurn&) = delete;
};
