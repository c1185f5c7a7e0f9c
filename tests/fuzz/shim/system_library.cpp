// No DLL is there.
#include "win32/system_library.h"

HMODULE LoadSystemLibrary(const wchar_t*) {
    return nullptr;
}

BOOL FreeLibrary(HMODULE) {
    return TRUE;
}

void* GetProcAddress(HMODULE, const char*) {
    return nullptr;
}
