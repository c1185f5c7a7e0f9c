// What machine this is: Windows' version, the model, the processor. Nothing here fails; a value that cannot
// be read is empty or "unknown".
#pragma once

#include <string>

#include "win32/platform.h"

struct OsInfo {
    std::wstring productName;     // "Windows 11 Pro"; empty when unknown
    std::wstring displayVersion;  // "23H2"; empty when unknown
    std::wstring updateRevision;  // decimal; empty when unknown
    DWORD major = 0;
    DWORD minor = 0;
    DWORD build = 0;
};

// The true version from RtlGetVersion (GetVersionEx answers what the manifest asks for) and the names from
// the registry.
OsInfo ReadOsInfo();

// Windows 11 still calls itself Windows 10 in the registry: the product name with the 11 that build 22000 and
// later of major version 10 are.
std::wstring CorrectProductName(std::wstring name, DWORD major, DWORD build);

// The first processor's name, or "unknown".
std::wstring ReadCpuName();

// The identifier that Windows' set-up gave this machine; empty when it cannot be read.
std::wstring ReadMachineGuid();

// Manufacturer and model, or "unknown".
std::wstring ReadHardwareName();
