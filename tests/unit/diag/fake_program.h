// Configurable state of the program: the log, the registry values, the restart. A report must not query
// displays again whose backlight is controlled.
#pragma once

#include <string>
#include <vector>

#include "diag/system_probe.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(fake_program);

struct FakeProgram {
    OsInfo os;
    std::wstring cpuName;
    std::wstring hardwareName;
    std::wstring machineGuid;
    std::wstring autostartValue;
    std::wstring ownPath;
    bool restartDone = false;
    std::vector<std::wstring> ring;
    std::vector<std::wstring> tail;
};

extern FakeProgram g_program;
