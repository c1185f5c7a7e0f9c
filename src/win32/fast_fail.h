// Ends the process immediately: no handler, destructor or other code of the program runs.
#pragma once

#include "win32/platform.h"

// `code` is a FAST_FAIL_* code of Windows. The exit status is STATUS_STACK_BUFFER_OVERRUN (0xC0000409) for
// every code.
[[noreturn]] inline void FastFail(unsigned code) {
#if defined(_MSC_VER)
    __fastfail(code);
#else
    // mingw-w64 lacks __fastfail, which compiles to this instruction.
    __asm__ volatile("int $0x29" : : "c"(code) : "memory");
    __builtin_unreachable();
#endif
}
