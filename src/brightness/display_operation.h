// Mutual exclusion of the operations on the displays. While an operation waits for a built-in panel, COM
// dispatches timers, sent messages and incoming calls, and any of these may request the next operation.
#pragma once

#include "app/state/app_state.h"

// One operation on the displays, from construction to the end of the scope. It is not started while another
// operation or the release at the end of a session is running, nor once the window or the session is ending.
// If the displays are busy, `request` is deferred: it is stored in pwmDeferred, and kMessagePwmSafeDeferred
// is posted when the displays are free. For deferred requests of assistive technology,
// kMessageAccessibleActions is posted as well. Window thread.
struct [[nodiscard]] DisplayOperation {
    const bool started;

    explicit DisplayOperation(PwmRequest request = PwmRequest::None);
    ~DisplayOperation();
    DisplayOperation(const DisplayOperation&) = delete;
    DisplayOperation& operator=(const DisplayOperation&) = delete;
};
