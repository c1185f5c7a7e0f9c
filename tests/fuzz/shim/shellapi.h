#pragma once

#include <windows.h>

struct NOTIFYICONDATAW {
    DWORD cbSize;
};
