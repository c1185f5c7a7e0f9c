// Ends the process at once, without a handler, a destructor or another instruction of the program.
#pragma once

#include "win32/platform.h"

// `code` is one of Windows' FAST_FAIL_* codes. Windows reports the process as ended with
// STATUS_STACK_BUFFER_OVERRUN (0xC0000409), whatever the code is.
[[noreturn]] inline void FastFail(unsigned code) {
#if defined(_MSC_VER)
    __fastfail(code);
#else
    // mingw-w64 has no __fastfail; this is what it stands for.
    __asm__ volatile("int $0x29" : : "c"(code) : "memory");
    __builtin_unreachable();
#endif
}
