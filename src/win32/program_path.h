// The path of the running program file.
#pragma once

#include <string>

// The full path of the running program file. Empty when it exceeds 259 characters: the shell cannot launch a
// longer path, from the Run key or otherwise.
std::wstring ProgramPath();

// Whether `path` is the running program file, ignoring case. False when ProgramPath() is empty.
bool IsProgramPath(const std::wstring& path);
