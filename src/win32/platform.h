// The only include of <windows.h>. The build defines UNICODE, STRICT, NOMINMAX, WIN32_LEAN_AND_MEAN and the
// Windows 10 version for every target.
#pragma once

#include <windows.h>

#include <shellapi.h>
