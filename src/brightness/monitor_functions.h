// Entry points of dxva2.dll. It is loaded at run time: a system without it has no external display to
// control. The types are declared here because the headers that declare them include all of Direct3D.
#pragma once

#include "win32/platform.h"

struct _PHYSICAL_MONITOR;  // NOLINT(bugprone-reserved-identifier): the tag in Windows' headers

struct MonitorFunctions {
    HMODULE module = nullptr;
    // GetNumberOfPhysicalMonitorsFromHMONITOR, GetPhysicalMonitorsFromHMONITOR and DestroyPhysicalMonitors
    BOOL(WINAPI* count)(HMONITOR display, DWORD* found) = nullptr;
    BOOL(WINAPI* fetch)(HMONITOR display, DWORD count, _PHYSICAL_MONITOR* monitors) = nullptr;
    BOOL(WINAPI* destroy)(DWORD count, _PHYSICAL_MONITOR* monitors) = nullptr;
    // GetMonitorCapabilities, GetMonitorBrightness and SetMonitorBrightness
    BOOL(WINAPI* capabilities)(HANDLE monitor, DWORD* capabilities, DWORD* colourTemperatures) = nullptr;
    BOOL(WINAPI* brightness)(HANDLE monitor, DWORD* minimum, DWORD* current, DWORD* maximum) = nullptr;
    BOOL(WINAPI* setBrightness)(HANDLE monitor, DWORD brightness) = nullptr;
};

// Loaded once and never unloaded: a thread may still be inside the library when the process ends. The module
// is null until the first successful load.
extern MonitorFunctions g_monitorFunctions;

// The functions, loaded at the first call. Null when the DLL or one of them is missing. Any thread.
const MonitorFunctions* LoadedMonitorFunctions();
