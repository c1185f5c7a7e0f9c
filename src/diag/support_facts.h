// Everything in the support report that is not in AppState: the clock, the machine, its displays, the
// registry and the log, read at one point in time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "diag/monitor_probe.h"
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
    std::uint64_t machineTag = 0;  // 0 when the machine has no readable identifier
    OsInfo os;
    std::wstring hardwareName;
    std::wstring cpuName;
    WORD architecture = 0;          // PROCESSOR_ARCHITECTURE_...
    DWORD processorCount = 0;       // logical processors
    std::uint64_t memoryBytes = 0;  // 0 when unknown
    std::wstring localeName;
    std::wstring timeZoneName;
    bool composition = false;  // the desktop window manager composes the screen
    MonitorProbeList monitors;
    std::vector<std::wstring> adapters;  // each name once
    bool restartDoneSinceFix = false;    // from IsRestartDoneSinceFix
    AutostartFacts autostart;
    std::vector<std::wstring> recentLines;     // of this run, oldest first
    std::vector<std::wstring> persistedLines;  // the end of events.log, oldest first
};

// Queries Windows for every field. Never fails: a value that cannot be read is empty, 0 or "unknown".
SupportFacts ReadSupportFacts();

// A stable pseudonym of a machine, by which support recognises it: 64-bit FNV-1a (Fowler, Noll, Vo) over the
// UTF-16LE bytes of its machine GUID. 0 for an empty GUID.
std::uint64_t MachineTag(const std::wstring& machineGuid);
