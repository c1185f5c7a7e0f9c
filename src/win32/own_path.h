// Where this program is.
#pragma once

#include <string>

// The full path of the running program file, cut at 259 characters.
std::wstring OwnProgramPath();

// True when `path` is the running program file's, without regard to case.
bool IsOwnProgramPath(const std::wstring& path);
