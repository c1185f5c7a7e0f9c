// The start-up sequence.
#pragma once

#include "win32/platform.h"

// Starts the program and runs it until it quits. Returns the exit code: that of WM_QUIT, which is 0 unless
// another program posted it; 0 for a second instance; 1 if the class or the window could not be created or
// GetMessageW keeps failing. A command line that contains the gamma range switch anywhere only removes the
// gamma range limit; the exit code is then 1 if Windows refuses.
int RunAmbrel(HINSTANCE instance, const wchar_t* commandLine);
