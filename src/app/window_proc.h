// The window procedure of the popup window.
#pragma once

#include "win32/platform.h"

extern "C" {

// The registered procedure: HandleWindowMessage inside a frame that calls the crash guard for an exception
// that no inner frame handles. On 64-bit Windows an exception does not pass from a window procedure to the
// code that called Windows. What happens next depends on the Windows version: the process's filter for
// unhandled exceptions may never see it.
LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Decodes the arguments of a message and calls its handler.
LRESULT CALLBACK HandleWindowMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
}
