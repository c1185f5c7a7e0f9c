// The script of a double, which tests replace while the program runs.
#pragma once

#include <windows.h>

// Reads the file into the zeroed array. The text is truncated to leave a terminating zero; it stays empty if
// the file cannot be opened.
template <std::size_t Size>
void ReadScriptFile(const wchar_t* path, char (&text)[Size]) {
    const HANDLE file =
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    DWORD size = 0;
    ReadFile(file, text, Size - 1, &size, nullptr);
    CloseHandle(file);
}
