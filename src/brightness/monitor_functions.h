// Entry points of dxva2.dll, loaded at run time: on a system without it, external displays cannot be
// controlled. Windows' headers for these functions include all of Direct3D, so the types are declared here.
#pragma once

#include "win32/platform.h"

struct _PHYSICAL_MONITOR;  // NOLINT(bugprone-reserved-identifier): the tag in Windows' headers

struct MonitorFunctions {
    HMODULE module = nullptr;
    BOOL(WINAPI* getNumberOfPhysicalMonitorsFromHMONITOR)(HMONITOR display, DWORD* found) = nullptr;
    BOOL(WINAPI* getPhysicalMonitorsFromHMONITOR)
    (HMONITOR display, DWORD count, _PHYSICAL_MONITOR* monitors) = nullptr;
    BOOL(WINAPI* destroyPhysicalMonitors)(DWORD count, _PHYSICAL_MONITOR* monitors) = nullptr;
    BOOL(WINAPI* getMonitorCapabilities)
    (HANDLE monitor, DWORD* capabilities, DWORD* colourTemperatures) = nullptr;
    BOOL(WINAPI* getMonitorBrightness)
    (HANDLE monitor, DWORD* minimum, DWORD* current, DWORD* maximum) = nullptr;
    BOOL(WINAPI* setMonitorBrightness)(HANDLE monitor, DWORD brightness) = nullptr;
};

// Loaded once and never unloaded: a thread may still be inside the library when the process ends. The module
// is null until the first successful load.
extern MonitorFunctions g_monitorFunctions;

// Returns the functions, loaded by the first call. Null if the DLL or one of the functions is missing. Any
// thread.
const MonitorFunctions* LoadedMonitorFunctions();
