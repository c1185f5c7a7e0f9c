// The actions of the unit under test in order, one line per call.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "win32/platform.h"

using CallRecord = std::vector<std::string>;

inline CallRecord g_calls;

// Record("set timer ", 6, " ", 150) appends the line "set timer 6 150".
template <typename... Parts>
void Record(const Parts&... parts) {
    std::ostringstream line;
    (line << ... << parts);
    g_calls.push_back(line.str());
}

// A handle that is only compared, never used.
template <typename Handle>
Handle MakeHandle(std::uintptr_t value) {
    return reinterpret_cast<Handle>(value);
}

template <typename Handle>
std::uintptr_t ValueOf(Handle handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

// Converts to ASCII, with "?" for every other character. The program's own texts in the log are ASCII.
inline std::string Narrow(std::wstring_view text) {
    std::string narrow;
    for (const wchar_t character : text) {
        narrow += character < 128 ? static_cast<char>(character) : '?';
    }
    return narrow;
}
