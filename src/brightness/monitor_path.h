// The identity of a monitor. A DDC/CI target's name contains the device name of the display it is connected
// to, which may belong to a different monitor after a restart; the monitor's device path does not.
#pragma once

#include <string>

// The device path of the monitor that a DDC/CI target of this name is now. Empty for a built-in panel, and if
// Windows reports no path. Queries Windows only, not the monitor.
std::wstring MonitorDevicePath(const std::wstring& targetName);
