// Ends a process that cannot continue.
#pragma once

// Ends the process. The runtime calls this when an allocation fails or when the standard library detects a
// violated precondition, on any thread and possibly in the middle of a change to AppState. Stack corruption
// does not reach this function: it calls FastFail directly.
[[noreturn]] void EndProcessAbnormally();
