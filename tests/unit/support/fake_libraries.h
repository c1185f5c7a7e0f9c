// The DLLs that the program loads at run time, as a test wants them to be. In the record stand "load NAME"
// and "free NAME". A DLL that was not installed is missing; Windows' own functions are found as ever.
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
