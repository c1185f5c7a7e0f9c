// The window of floor_program.cpp: its popup and its polls.
#pragma once

#include "win32/platform.h"

constexpr UINT_PTR kFloorPollTimer = 4;

// The data that the icon was added with.
extern NOTIFYICONDATAW g_floorIcon;

LRESULT CALLBACK FloorWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
