// External monitors over DDC/CI. Every operation enumerates the monitors again, and each call blocks until
// the monitor answers. A monitor whose call fails is skipped. Window thread, or the release thread at the end
// of the session.
#pragma once

#include <string>

#include "brightness/display_target.h"
#include "win32/platform.h"

// Callback of EnumDisplayMonitors: appends each physical monitor of one display monitor whose brightness can
// be controlled to the DisplayTargetList that `context` points to. Returns TRUE to continue the enumeration.
BOOL CALLBACK EnumerateDdcTargets(HMONITOR display, HDC dc, RECT* rect, LPARAM context);

// Sets the monitor with the target name to a percentage of its range; above 100 is treated as 100. If several
// monitors have the name, the first that accepts the brightness is set. False if none accepts it.
bool SetDdcBrightness(const std::wstring& name, std::uint32_t percent);

// Converts a raw brightness to a percentage of the range, and back, rounded to nearest. If the maximum does
// not exceed the minimum, the brightness reads as 100 percent and the maximum is written.
std::uint32_t PercentOfRange(std::uint32_t minimum, std::uint32_t current, std::uint32_t maximum);
std::uint32_t RawBrightness(std::uint32_t minimum, std::uint32_t maximum, std::uint32_t percent);
