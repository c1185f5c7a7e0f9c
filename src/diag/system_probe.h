// Identifies the machine: Windows version, model, processor. Never fails; a value that cannot be read is
// empty or "unknown".
#pragma once

#include <string>

#include "win32/platform.h"

// The report shows this for a value that cannot be read.
inline constexpr wchar_t kUnknown[] = L"unknown";

struct OsInfo {
    std::wstring productName;     // "Windows 11 Pro"; empty when unknown
    std::wstring displayVersion;  // "23H2"; empty when unknown
    std::wstring updateRevision;  // decimal; empty when unknown
    DWORD major = 0;
    DWORD minor = 0;
    DWORD build = 0;
};

// The version from RtlGetVersion (GetVersionEx reports the version that the manifest declares) and the names
// from the registry.
OsInfo ReadOsInfo();

// The registry of Windows 11 still contains "Windows 10": replaces the 10 by 11 when the major version is 10
// and the build 22000 or later.
std::wstring CorrectProductName(std::wstring name, DWORD major, DWORD build);

// The first processor's name, or "unknown".
std::wstring ReadCpuName();

// The machine GUID that Windows Setup generated; empty when it cannot be read.
std::wstring ReadMachineGuid();

// Manufacturer and model, or "unknown".
std::wstring ReadHardwareName();
