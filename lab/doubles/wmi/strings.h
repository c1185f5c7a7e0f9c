#pragma once

#include <string>

#include <windows.h>

#include <oleauto.h>

// Finds BSTRs that are never freed, with a spy on COM's allocator.

// Registers the spy. The library must stay loaded from then on.
void TrackAllocations();

// Allocates a BSTR for the program to free. It is counted until then.
BSTR AllocateReturnedString(const std::wstring& text);

// Counts a BSTR argument until the program frees it. False if it is not a BSTR but a pointer to other text.
bool TrackArgument(BSTR text);

// The BSTR's text; "" for null.
std::wstring TextOf(BSTR text);
