// The calls of a start, in the order of floor_program.cpp.
#pragma once

#include "win32/platform.h"

// The search for libraries, the machine's description, COM, the DPI, the mutex and the drawing resources.
void FloorPrepareProcess();

// The settings, the log, and the values of the registry that a start reads.
void FloorReadFiles();

// The cursors and the Magnification API.
void FloorLoadPipeline();

HWND FloorCreateWindow(HINSTANCE instance, WNDPROC procedure);
void FloorAddIcon(HINSTANCE instance, HWND window);
