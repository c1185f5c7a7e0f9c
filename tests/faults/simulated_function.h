// The rows of the simulated platform's tables.
#pragma once

#include <vector>

#include "win32/platform.h"

struct SimulatedRow {
    const char* name;
    void* function;
};

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

// Windows' own function, to initialise a global: later the imports are replaced, GetProcAddress among them.
template <typename Function>
Function RealFunction(const wchar_t* library, const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(GetModuleHandleW(library), name));
}

// Functions that the program imports.
std::vector<SimulatedRow> SimulatedRamps();
std::vector<SimulatedRow> SimulatedCursors();
