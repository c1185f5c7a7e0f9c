#pragma once

#include <windows.h>

// Simulates a COM call to another apartment that takes `delay` milliseconds. In a single-threaded apartment
// the wait dispatches sent messages, incoming COM calls, WM_PAINT, activation and timers; mouse, keyboard and
// posted messages stay in the queue. While the thread handles another thread's SendMessage, the call is
// rejected immediately with RPC_E_CANTCALLOUT_ININPUTSYNCCALL. In the multithreaded apartment nothing is
// dispatched or rejected.
HRESULT SimulateComCall(LONG64 delay);
