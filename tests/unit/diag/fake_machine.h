// The machine under the support report: the result of each system query. Records the queries that the tests
// check.
#pragma once

#include <string>
#include <vector>

#include "diag/monitor_probe.h"
#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(fake_machine);

struct FakeAdapter {
    std::wstring name;
    bool attached = true;  // to the desktop
};

struct FakeMachine {
    SYSTEMTIME now = {};
    std::uint64_t tick = 0;
    SYSTEM_INFO system = {};
    bool memoryKnown = true;
    std::uint64_t memoryBytes = 0;
    int localeAnswer = 0;  // characters with the terminating zero
    std::wstring localeName;
    DWORD timeZoneAnswer = TIME_ZONE_ID_UNKNOWN;
    std::wstring timeZoneName;  // up to 32 characters: then there is no room for a terminating zero
    bool compositionCallExists = true;
    HRESULT compositionStatus = S_OK;
    BOOL composition = TRUE;
    bool enumerationWorks = true;
    int displays = 0;  // display monitors, named DISPLAY1, DISPLAY2 and so on
    std::vector<FakeAdapter> adapters;
    std::wstring existingFile;
};

extern FakeMachine g_machine;

// A machine with known results, with dwmapi.dll.
void ResetMachine();
// Reinstalls dwmapi.dll, with or without its function.
void InstallCompositionLibrary();
