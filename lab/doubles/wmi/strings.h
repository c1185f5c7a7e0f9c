#pragma once

#include <string>

#include <windows.h>

#include <oleauto.h>

// Finds BSTRs that are never freed, by listening to COM's allocator.

// Begins to listen. The library must stay loaded from then on.
void ListenToAllocator();

// A BSTR for the caller to free; counted until it does.
BSTR HandOutString(const std::wstring& text);

// Counts a BSTR that the caller passed until it frees it. False when it is none: a mere pointer to wide text.
bool WatchArgument(BSTR text);

// The BSTR's text, "" for null.
std::wstring TextOf(BSTR text);
