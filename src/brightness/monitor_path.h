// The identity of a monitor. A DDC/CI target's name contains the device name of the display it is connected
// to, which may belong to a different monitor after a restart; the monitor's device path does not.
#pragma once

#include <string>

// Returns the device path of the monitor that currently has this DDC/CI target name. Empty for a built-in
// panel, or if Windows reports no path. Queries only Windows, not the monitor.
std::wstring MonitorDevicePath(const std::wstring& targetName);
