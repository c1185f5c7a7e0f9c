// The real function behind a seam: REAL_CALL(L"gdi32.dll", DeleteObject)(bitmap).
#pragma once

#include "win32/platform.h"

#define REAL_CALL(library, function) \
    reinterpret_cast<decltype(&function)>(GetProcAddress(GetModuleHandleW(library), #function))
