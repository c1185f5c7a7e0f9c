#pragma once

#include <windows.h>

// Lets a call to another apartment take `delay` milliseconds as COM does. In a single-threaded apartment the
// wait dispatches sent messages, incoming COM calls, WM_PAINT, activation and timers; mouse, keyboard and
// posted messages stay in the queue. Such a call is refused while the thread handles a message that another
// thread sent and that is not answered yet: the result is then RPC_E_CANTCALLOUT_ININPUTSYNCCALL, at once. In
// the multithreaded apartment nothing is dispatched or refused.
HRESULT BeginComCall(LONG64 delay);
