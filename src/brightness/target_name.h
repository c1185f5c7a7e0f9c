// The names of DDC/CI targets, such as "DXVA2:\\.\DISPLAY1#0": the display monitor's device name and the
// index of the physical monitor.
#pragma once

#include <cstdint>
#include <string>

// Returns the target name; "UNKNOWN" stands for an empty device name.
std::wstring DdcTargetName(const wchar_t* device, std::uint32_t index);

// Whether the name is that of a DDC/CI target. A built-in panel's name is its WMI instance name.
bool IsDdcTargetName(const std::wstring& name);

// Splits a target name into its device name and index. False for the name of a built-in panel.
bool ParseDdcTargetName(const std::wstring& name, std::wstring* device, std::uint32_t* index);
