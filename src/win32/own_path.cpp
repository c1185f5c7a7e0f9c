#include "win32/own_path.h"

#include "win32/platform.h"

std::wstring OwnProgramPath() {
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    // A truncated path fills the buffer.
    return length < MAX_PATH ? std::wstring(path, length) : std::wstring();
}

bool IsOwnProgramPath(const std::wstring& path) {
    const std::wstring own = OwnProgramPath();
    return !own.empty() && CompareStringOrdinal(path.c_str(), -1, own.c_str(), -1, TRUE) == CSTR_EQUAL;
}
