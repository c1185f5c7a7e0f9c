// Records the Windows calls of a drag step without allocating, because the test counts allocations.
#pragma once

#include <string>
#include <vector>

#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(drag_platform);

struct tagMAGCOLOREFFECT;

struct DragPlatform {
    bool acceptsRamps = true;
    bool readsBackRight = true;
    DWORD matrixError = 0;
    unsigned char ramp[1536] = {};
};

extern DragPlatform g_platform;

// The window that is refreshed.
HWND DraggedWindow();

BOOL WINAPI FakeSetEffect(tagMAGCOLOREFFECT* effect);

using CallRecord = std::vector<std::string>;

CallRecord Steps();
void ClearSteps();
