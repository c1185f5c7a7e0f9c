// The physical monitors of one display monitor.
#pragma once

#include <memory>

#include "brightness/monitor_functions.h"

#include <highlevelmonitorconfigurationapi.h>
#include <physicalmonitorenumerationapi.h>

// The handles of a display monitor's physical monitors, destroyed at the end of the scope. A handle of 0 may
// be valid. `count` is 0 if Windows does not return the handles or memory runs out.
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

// Raw values, as the monitor reports them.
struct MonitorBrightness {
    DWORD minimum = 0;
    DWORD current = 0;
    DWORD maximum = 0;
};

// Whether the monitor reports that its brightness can be controlled. False if it does not answer.
bool IsBrightnessSupported(const MonitorFunctions& functions, HANDLE monitor);

// False if the monitor does not answer.
bool ReadBrightness(const MonitorFunctions& functions, HANDLE monitor, MonitorBrightness* read);

// Returns the display monitor's device name and flags. The name is empty if Windows does not return it.
MONITORINFOEXW ReadMonitorInfo(HMONITOR display);
