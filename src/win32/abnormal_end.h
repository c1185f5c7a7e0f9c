// The one way out for a process that cannot go on.
#pragma once

// Ends the process. The runtime calls this when memory runs out or when the standard library finds a broken
// precondition, from any thread and possibly in the middle of a change to AppState. A smashed stack does not
// come here: then nothing may run any more.
[[noreturn]] void EndProcessAbnormally();
