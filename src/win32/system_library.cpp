#include "win32/system_library.h"

void RestrictDllSearchToSystem32() {
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
}

HMODULE LoadSystemLibrary(const wchar_t* name) {
    return LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
}
