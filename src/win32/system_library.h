// Run-time loading of Windows' own DLLs, from System32 only: the program may run from a downloads folder,
// where somebody could put a DLL of the same name beside it.
#pragma once

#include "win32/platform.h"

// Takes the program's own folder and the current one out of the search for DLLs. First statement of the
// process.
void RestrictDllSearchToSystem32();

// Loads a DLL of System32 by its bare name. Null on failure, with GetLastError set.
HMODULE LoadSystemLibrary(const wchar_t* name);

// A DLL loaded for one operation. module is null when it could not be loaded.
struct [[nodiscard]] SystemLibrary {
    HMODULE module;

    explicit SystemLibrary(const wchar_t* name) : module(LoadSystemLibrary(name)) {}
    ~SystemLibrary() {
        if (module != nullptr) FreeLibrary(module);
    }
    SystemLibrary(const SystemLibrary&) = delete;
    SystemLibrary& operator=(const SystemLibrary&) = delete;

    // The entry point of that name, null when the library or the name is missing.
    template <typename Function>
    Function Find(const char* name) const {
        if (module == nullptr) return nullptr;
        return reinterpret_cast<Function>(GetProcAddress(module, name));
    }
};
