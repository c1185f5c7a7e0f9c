// Hands the popup's accessible object to assistive technology.
#pragma once

#include "win32/platform.h"

// The answer to WM_GETOBJECT for the client area; `wParam` is the message's. 0 without oleacc.dll, which the
// first call loads, without memory, or once the window is being destroyed.
LRESULT AnswerAccessibilityRequest(WPARAM wParam);

// Gives up the program's reference to the object at the end of the window. Clients may keep theirs.
void ReleaseAccessibleObject();
