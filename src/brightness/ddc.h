// External monitors over DDC/CI. Every operation visits the monitors anew, and each call waits until the
// monitor answers. A call that fails makes that monitor contribute nothing. For the window's
// thread, or the one that it waits for at the session's end.
#pragma once

#include <string>

#include "brightness/display_target.h"
#include "win32/platform.h"

// For EnumDisplayMonitors: appends the drivable monitors behind one display monitor to the DisplayTargetList
// that `context` points to. Always TRUE.
BOOL CALLBACK EnumerateDdcTargets(HMONITOR display, HDC dc, RECT* rect, LPARAM context);

// Sets a monitor of that name, the first that accepts it, to a percentage of its range; above 100 counts as
// 100. True when the monitor accepted it.
bool SetDdcBrightness(const std::wstring& name, std::uint32_t percent);

// A raw brightness as a percentage of the range, rounded to nearest, and back. A range that is empty or
// upside down reads as 100 percent and is written with its maximum.
std::uint32_t PercentOfRange(std::uint32_t minimum, std::uint32_t current, std::uint32_t maximum);
std::uint32_t RawBrightness(std::uint32_t minimum, std::uint32_t maximum, std::uint32_t percent);
