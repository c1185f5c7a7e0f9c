// Replaces display monitors and their physical monitors, as dxva2.dll and the window manager return them. The
// record names each call. Display monitors are M1, M2, ...; a physical monitor is identified by its handle:
//
//     visit all                     EnumDisplayMonitors
//     count M1                      GetNumberOfPhysicalMonitorsFromHMONITOR
//     fetch 2 of M1                 GetPhysicalMonitorsFromHMONITOR
//     info M1                       GetMonitorInfoW
//     mode \\.\DISPLAY1             EnumDisplaySettingsW
//     capabilities 11, read 11, write 11 80, destroy 2 of M1
//
// A call that fails fills its output with arbitrary data first. The test fails if a handle is used while it
// is not open, is destroyed twice or without the others of its display monitor, or is open at the end of the
// callback.
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
    bool capabilitiesReadable = true;
    bool readable = true;
    bool settable = true;
    std::wstring description = L"Generic PnP Monitor";
};

struct FakeMonitor {
    std::wstring device = {};
    std::vector<FakePhysical> physical = {};
    std::optional<DWORD> reportedCount = {};  // instead of the actual number
    bool countable = true;
    bool fetchable = true;
    bool infoReadable = true;
    bool primary = false;
    bool modeReadable = true;
    DEVMODEW mode = {};
};

extern std::vector<FakeMonitor> g_monitors;

// Handles obtained and not destroyed.
int HandlesHeld();

// The fakes of the functions of dxva2.dll.
MonitorFunctions FakeMonitorFunctions();

// Resets the fakes, the record and AppState: no monitors, and dxva2.dll is already loaded.
void StartWithoutMonitors();
