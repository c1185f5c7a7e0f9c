// Stack for the code that runs after a stack overflow.
#pragma once

// Reserves 64 KiB of the calling thread's stack for it. Every thread of the program calls this once. If
// Windows refuses, the crash guard cannot run after a stack overflow on that thread.
void ReserveCrashStack();
