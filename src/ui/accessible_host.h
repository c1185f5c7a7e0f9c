// Passes the popup's accessible object to assistive technology.
#pragma once

#include "win32/platform.h"

// Returns the result of WM_GETOBJECT for the client area; `wParam` is that of the message. The first call
// loads oleacc.dll. 0 if the DLL is missing, memory runs out, or the window is being created or destroyed.
LRESULT AnswerAccessibilityRequest(WPARAM wParam);

// Releases the program's reference to the object when the window is destroyed. Clients may keep theirs.
void ReleaseAccessibleObject();
