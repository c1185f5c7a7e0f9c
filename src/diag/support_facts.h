// What the support report tells that the program's own state does not hold: the clock, the machine, its
// displays, the registry and the log, read at one moment.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "brightness/monitor_probe.h"
#include "diag/system_probe.h"
#include "win32/platform.h"

struct AutostartFacts {
    std::wstring value;  // of the Run key; empty when it is not set
    bool targetExists = false;
    bool isThisProgram = false;
};

struct SupportFacts {
    SYSTEMTIME now = {};           // local time
    std::uint64_t tick = 0;        // GetTickCount64, ms
    std::uint64_t machineTag = 0;  // 0 when the machine cannot be told
    OsInfo os;
    std::wstring hardwareName;
    std::wstring cpuName;
    WORD architecture = 0;          // PROCESSOR_ARCHITECTURE_...
    DWORD processorCount = 0;       // logical ones
    std::uint64_t memoryBytes = 0;  // 0 when unknown
    std::wstring localeName;
    std::wstring timeZoneName;
    bool composition = false;  // the desktop window manager composes the screen
    MonitorProbeList monitors;
    std::vector<std::wstring> adapters;  // each name once
    bool restartDoneSinceFix = false;    // as IsRestartDoneSinceFix says
    AutostartFacts autostart;
    std::vector<std::wstring> recentLines;     // of this run, oldest first
    std::vector<std::wstring> persistedLines;  // the end of events.log, oldest first
};

// Asks Windows for all of it. Nothing fails as a whole: what cannot be read stays empty, 0 or "unknown".
SupportFacts ReadSupportFacts();

// A stable number for a machine that names nobody: 64-bit FNV-1a (Fowler, Noll, Vo) over the UTF-16LE bytes
// of the machine's own identifier. 0 for an empty one.
std::uint64_t MachineTag(const std::wstring& machineGuid);
