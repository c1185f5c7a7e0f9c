// The process from its start to the end of its message loop.
#pragma once

#include "win32/platform.h"

// Starts the program and runs it until it is quit. Returns the exit code: 0, also for a second instance; 1
// when the window could not be made. A command line that holds the gamma range switch anywhere only lifts
// that limit.
int RunAmbrel(HINSTANCE instance, const wchar_t* commandLine);
