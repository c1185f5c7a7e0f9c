// Ends a process that cannot continue.
#pragma once

// Called on the failing thread with an address near the failure. Must not allocate: memory may have run out.
using AbnormalEndHandler = void (*)(const void* address);

// Registers the function that EndProcessAbnormally calls; the app layer restores the screen in it. Null, the
// default, for none. Call before the process has a second thread.
void SetAbnormalEndHandler(AbnormalEndHandler handler);

// Calls the handler and ends the process. The runtime calls this when an allocation that must not fail does,
// or when the standard library detects a violated precondition, on any thread and possibly in the middle of a
// change to AppState. Stack corruption does not reach this function: it calls FastFail directly.
[[noreturn]] void EndProcessAbnormally();
