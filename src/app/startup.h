// The process from its start to the end of its message loop.
#pragma once

#include "win32/platform.h"

// Starts the program and runs it until it is quit. Returns the exit code: that of WM_QUIT, 0; 0
// also for a second instance; 1 when window or class could not be made. A command line that holds the gamma
// range switch anywhere only lifts that limit, and gives 1 when Windows refused.
int RunAmbrel(HINSTANCE instance, const wchar_t* commandLine);
