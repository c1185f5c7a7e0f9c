// Replaces pointers of the import table while a benchmark runs.
#pragma once

#include "win32/platform.h"

// The table is read-only after the start.
template <typename Function>
void SetImport(Function** pointer, Function* function) {
    DWORD before = 0;
    VirtualProtect(pointer, sizeof(*pointer), PAGE_READWRITE, &before);
    *const_cast<Function* volatile*>(pointer) = function;
    VirtualProtect(pointer, sizeof(*pointer), before, &before);
}
