// The path of the running program file.
#pragma once

#include <string>

// The full path of the running program file; empty when it is longer than 259 characters: the shell neither
// reads a longer one from the Run key nor launches it.
std::wstring OwnProgramPath();

// Whether `path` is the running program file, ignoring case. False when OwnProgramPath() is empty.
bool IsOwnProgramPath(const std::wstring& path);
