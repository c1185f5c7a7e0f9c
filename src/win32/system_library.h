// Loads Windows DLLs at run time, from System32 only: the program may run from a downloads folder, where an
// attacker can plant a DLL of the same name beside it.
#pragma once

#include "win32/platform.h"

// Removes the program's folder and the current folder from the DLL search path. Must be the first statement
// of the process.
void RestrictDllSearchToSystem32();

// Loads a DLL from System32 by its file name. Null on failure, with GetLastError set.
HMODULE LoadSystemLibrary(const wchar_t* name);

// A DLL loaded for one operation. `module` is null when loading fails.
struct [[nodiscard]] SystemLibrary {
    HMODULE module;

    explicit SystemLibrary(const wchar_t* name) : module(LoadSystemLibrary(name)) {}
    ~SystemLibrary() {
        if (module != nullptr) FreeLibrary(module);
    }
    SystemLibrary(const SystemLibrary&) = delete;
    SystemLibrary& operator=(const SystemLibrary&) = delete;

    // The exported function of that name; null when the library or the export is missing.
    template <typename Function>
    Function Find(const char* name) const {
        if (module == nullptr) return nullptr;
        return reinterpret_cast<Function>(GetProcAddress(module, name));
    }
};
