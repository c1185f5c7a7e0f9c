// The physical monitors behind one display monitor, for the length of one visit.
#pragma once

#include <memory>
#include <string>

#include "brightness/monitor_functions.h"

#include <highlevelmonitorconfigurationapi.h>
#include <physicalmonitorenumerationapi.h>

// The handles of a display monitor's physical monitors, destroyed at the end of the scope. A handle may be 0
// and valid. count is 0 when they cannot be counted or fetched, or when memory runs out.
struct [[nodiscard]] PhysicalMonitors {
    const MonitorFunctions* functions;
    std::unique_ptr<PHYSICAL_MONITOR[]> monitors;
    DWORD count = 0;

    PhysicalMonitors(const MonitorFunctions* loaded, HMONITOR display);
    ~PhysicalMonitors();
    PhysicalMonitors(const PhysicalMonitors&) = delete;
    PhysicalMonitors& operator=(const PhysicalMonitors&) = delete;

    HANDLE HandleOf(DWORD index) const { return monitors[index].hPhysicalMonitor; }
};

struct MonitorRange {
    DWORD minimum = 0;  // raw, as the monitor reports them
    DWORD current = 0;
    DWORD maximum = 0;
};

// Whether the monitor says that its brightness can be driven, and what it is. False when it does not answer.
bool HasBrightness(const MonitorFunctions& functions, HANDLE monitor);
bool ReadRange(const MonitorFunctions& functions, HANDLE monitor, MonitorRange* range);

// The display monitor's name and flags; empty when Windows does not tell.
MONITORINFOEXW InfoOf(HMONITOR display);

// "DXVA2:\\.\DISPLAY1#0": the name of a physical monitor, the same at every enumeration.
std::wstring DdcTargetName(const wchar_t* device, DWORD index);
