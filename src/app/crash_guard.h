// The crash guard: the last code of the program that runs when an exception is not handled or when the
// runtime ends the process. It restores the screen and the cursors and logs where the fault was. It changes
// neither the exit code nor what Windows reports: every exception is passed on to Windows. A process that is
// killed or that fails fast (stack corruption, a heap that Windows finds damaged) never reaches it.
#pragma once

#include "win32/platform.h"

// Installs the guard for all threads and reserves stack for it on the calling one. Before this call nothing
// on the screen has been changed by this process. Window thread.
void InstallCrashGuard();

// Restores the identity ramp if a ramp of the filter may be loaded, then the system cursors, then logs the
// code in eight hexadecimal digits and the address relative to its module. What Windows refuses is tried once
// more. Does nothing at a second fault. Does not allocate. Runs on the failing thread.
void OnCrash(DWORD code, const void* address);
