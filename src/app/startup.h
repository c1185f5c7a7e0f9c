// The start-up sequence and the message loop.
#pragma once

#include "win32/platform.h"

// Starts the program and runs it until it quits. Returns the exit code: that of WM_QUIT, 0; 0 for a second
// instance; 1 if the class or the window could not be created. A command line that contains the gamma range
// switch anywhere only removes the gamma range limit; the exit code is then 1 if Windows refuses.
int RunAmbrel(HINSTANCE instance, const wchar_t* commandLine);
