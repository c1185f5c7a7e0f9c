#include "win32/own_path.h"

#include "win32/platform.h"

std::wstring OwnProgramPath() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    path[MAX_PATH - 1] = L'\0';
    return path;
}

bool IsOwnProgramPath(const std::wstring& path) {
    return CompareStringOrdinal(path.c_str(), -1, OwnProgramPath().c_str(), -1, TRUE) == CSTR_EQUAL;
}
