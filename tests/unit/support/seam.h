// The seam between the program and Windows. A call of a DLL's function goes through a pointer named after it;
// a test that defines that pointer takes the call's place, and the unit under test is the one that ships.
//
//     BOOL WINAPI FakeKillTimer(HWND window, UINT_PTR id) { ... }
//     AMBREL_SEAM(KillTimer, FakeKillTimer);
//
// A fake that must call the real function finds it with GetProcAddress.
#pragma once

#include "win32/platform.h"

#define AMBREL_SEAM(function, fake)               \
    extern "C" {                                  \
    extern decltype(&function) __imp_##function;  \
    decltype(&function) __imp_##function = &fake; \
    }                                             \
    static_assert(true)
