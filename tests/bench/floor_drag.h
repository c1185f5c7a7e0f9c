// The floor of one step of a slider drag.
#pragma once

#include "win32/platform.h"

// What a step passes to Windows, computed beforehand.
struct FloorStep {
    HWND window = nullptr;
    BOOL(WINAPI* setMatrix)(const float* matrix) = nullptr;  // null: Legacy Mode
    float matrix[25] = {};
    WORD ramp[3][256] = {};
    NOTIFYICONDATAW icon = {};
    const HCURSOR* cursors = nullptr;  // null: no re-tint
    const DWORD* cursorIds = nullptr;
    int cursorCount = 0;
    int cursorSize = 0;
};

// The icon of the window that is shown in the notification area, with a tip.
NOTIFYICONDATAW FloorIcon(HWND window, HICON icon);

// Makes the step's calls and invalidates the window.
void FloorDragStep(FloorStep* step);
