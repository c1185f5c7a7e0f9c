// Properties of the display monitors, for the support report.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "win32/platform.h"

struct MonitorProbe {
    std::wstring deviceName;
    std::wstring description;  // of the first physical monitor; empty if there is none
    std::uint32_t width = 0;   // pixels
    std::uint32_t height = 0;
    std::uint32_t refresh = 0;  // Hz
    std::uint32_t bitsPerPixel = 0;
    bool primary = false;
    bool internal = false;      // a built-in panel, according to the description
    std::uint32_t current = 0;  // raw brightness of the first physical monitor; 0 if unknown
    std::uint32_t minimum = 0;
    std::uint32_t maximum = 0;
    bool brightnessCapable = false;
};

using MonitorProbeList = std::vector<MonitorProbe>;

// Callback of EnumDisplayMonitors: appends the properties of the display monitor to the MonitorProbeList that
// `context` points to. A property that cannot be read is 0 or empty. Returns TRUE to continue the
// enumeration.
BOOL CALLBACK ProbeMonitor(HMONITOR display, HDC dc, RECT* rect, LPARAM context);
