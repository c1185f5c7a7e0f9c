#include "win32/program_path.h"

#include "win32/platform.h"

std::wstring ProgramPath() {
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    // A truncated path fills the buffer.
    return length < MAX_PATH ? std::wstring(path, length) : std::wstring();
}

bool IsProgramPath(const std::wstring& path) {
    const std::wstring program = ProgramPath();
    return !program.empty() &&
           CompareStringOrdinal(path.c_str(), -1, program.c_str(), -1, TRUE) == CSTR_EQUAL;
}
