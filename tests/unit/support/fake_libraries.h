// Configurable fakes of the DLLs that the program loads at run time. Records "load NAME" and "free NAME". A
// DLL that was not installed is missing. Functions of Windows' own modules are found as usual.
#pragma once

#include <map>
#include <string>

#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(fake_libraries);

using LibraryFunctions = std::map<std::string, FARPROC>;

void InstallLibrary(const std::wstring& name, const LibraryFunctions& functions);
void RemoveLibraries();

template <typename Function>
FARPROC EntryPoint(Function* function) {
    return reinterpret_cast<FARPROC>(function);
}
