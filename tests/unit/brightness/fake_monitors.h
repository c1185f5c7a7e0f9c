// Display monitors with physical monitors behind them, as dxva2.dll and the window manager would tell them.
// Each call leaves a line in the record; a display monitor is M1, M2, ... and a physical monitor is told by
// its handle:
//
//     visit all                     EnumDisplayMonitors
//     count M1                      GetNumberOfPhysicalMonitorsFromHMONITOR
//     fetch 2 of M1                 GetPhysicalMonitorsFromHMONITOR
//     info M1                       GetMonitorInfoW
//     mode \\.\DISPLAY1             EnumDisplaySettingsW
//     capabilities 11, read 11, write 11 80, destroy 2 of M1
//
// A call that fails has filled what it was given with rubbish first. Handles that are used without being
// held, destroyed twice or otherwise than they were obtained, or held at the end of a visit fail the test.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "brightness/monitor_functions.h"
#include "brightness/physical_monitors.h"
#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(fake_monitors);

struct FakePhysical {
    std::uintptr_t handle = 0;
    DWORD minimum = 0;
    DWORD current = 50;
    DWORD maximum = 100;
    DWORD capabilities = MC_CAPS_BRIGHTNESS;
    bool tellsCapabilities = true;
    bool readable = true;
    bool settable = true;
    std::wstring description = L"Generic PnP Monitor";
};

struct FakeMonitor {
    std::wstring device = {};
    std::vector<FakePhysical> physical = {};
    std::optional<DWORD> countTold = {};  // instead of the true number
    bool countable = true;
    bool fetchable = true;
    bool tellsInfo = true;
    bool primary = false;
    bool tellsMode = true;
    DEVMODEW mode = {};
};

extern std::vector<FakeMonitor> g_monitors;

// Handles obtained and not destroyed.
int HandlesHeld();

MonitorFunctions FakeMonitorFunctions();

// No monitors, and dxva2 in place in AppState as if it had been loaded.
void StartWithoutMonitors();
