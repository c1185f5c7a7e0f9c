// The one include of <windows.h>. UNICODE, STRICT, NOMINMAX, WIN32_LEAN_AND_MEAN and the Windows 10 version
// are set for every target by the build.
#pragma once

#include <windows.h>

#include <shellapi.h>
