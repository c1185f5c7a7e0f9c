// Where this program is.
#pragma once

#include <string>

// The full path of the running program file, cut at 259 characters.
std::wstring OwnProgramPath();
