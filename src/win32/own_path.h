// The path of the running program file.
#pragma once

#include <string>

// The full path of the running program file, truncated to 259 characters.
std::wstring OwnProgramPath();

// Whether `path` equals OwnProgramPath(), ignoring case.
bool IsOwnProgramPath(const std::wstring& path);
