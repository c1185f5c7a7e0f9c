#include "diag/support_facts.h"

#include <algorithm>

#include "filter/gamma_restart.h"
#include "store/autostart.h"
#include "store/event_log.h"
#include "win32/program_path.h"
#include "win32/system_library.h"

namespace {

constexpr DWORD kMaxDevices = 256;  // sanity limit

void ReadProcessor(SupportFacts* facts) {
    SYSTEM_INFO system = {};
    GetNativeSystemInfo(&system);
    facts->architecture = system.wProcessorArchitecture;
    facts->processorCount = system.dwNumberOfProcessors;
    facts->cpuName = ReadCpuName();
}

std::uint64_t ReadMemoryBytes() {
    MEMORYSTATUSEX memory = {};
    memory.dwLength = sizeof(memory);
    return GlobalMemoryStatusEx(&memory) ? memory.ullTotalPhys : 0;
}

std::wstring ReadLocaleName() {
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
    return GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH) < 1 ? kUnknown : name;
}

std::wstring ReadTimeZoneName() {
    TIME_ZONE_INFORMATION zone = {};
    if (GetTimeZoneInformation(&zone) == TIME_ZONE_ID_INVALID) return kUnknown;
    const wchar_t* name = zone.StandardName;
    return {name, std::find(name, name + std::size(zone.StandardName), L'\0')};
}

// False when dwmapi.dll is missing.
bool IsCompositionEnabled() {
    using DwmIsCompositionEnabledFunction = HRESULT(WINAPI*)(BOOL*);
    const SystemLibrary dwmapi(L"dwmapi.dll");
    const auto isCompositionEnabled = dwmapi.Find<DwmIsCompositionEnabledFunction>("DwmIsCompositionEnabled");
    BOOL enabled = FALSE;
    return isCompositionEnabled != nullptr && SUCCEEDED(isCompositionEnabled(&enabled)) && enabled;
}

std::vector<std::wstring> ReadAdapters() {
    std::vector<std::wstring> adapters;
    DISPLAY_DEVICEW device = {};
    device.cb = sizeof(device);
    for (DWORD i = 0; i < kMaxDevices && EnumDisplayDevicesW(nullptr, i, &device, 0); ++i) {
        if ((device.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) == 0) continue;
        const std::wstring name = device.DeviceString;
        if (std::find(adapters.begin(), adapters.end(), name) == adapters.end()) adapters.push_back(name);
    }
    return adapters;
}

AutostartFacts ReadAutostartFacts() {
    AutostartFacts autostart;
    autostart.value = ReadAutostartValue();
    autostart.targetExists = GetFileAttributesW(autostart.value.c_str()) != INVALID_FILE_ATTRIBUTES;
    autostart.isThisProgram = IsProgramPath(autostart.value);
    return autostart;
}

}  // namespace

SupportFacts ReadSupportFacts() {
    SupportFacts facts;
    // Read first, so that lines which the queries below log do not appear in the report.
    facts.recentLines = ReadLogRing();
    facts.persistedLines = ReadLogTail();
    GetLocalTime(&facts.now);
    facts.tick = GetTickCount64();
    facts.machineTag = MachineTag(ReadMachineGuid());
    facts.os = ReadOsInfo();
    facts.hardwareName = ReadHardwareName();
    ReadProcessor(&facts);
    facts.memoryBytes = ReadMemoryBytes();
    facts.localeName = ReadLocaleName();
    facts.timeZoneName = ReadTimeZoneName();
    facts.composition = IsCompositionEnabled();
    EnumDisplayMonitors(nullptr, nullptr, ProbeMonitor, reinterpret_cast<LPARAM>(&facts.monitors));
    facts.adapters = ReadAdapters();
    facts.restartDoneSinceFix = IsRestartDoneSinceFix();
    facts.autostart = ReadAutostartFacts();
    return facts;
}

std::uint64_t MachineTag(const std::wstring& machineGuid) {
    constexpr std::uint64_t kOffsetBasis = 0xCBF29CE484222325;
    constexpr std::uint64_t kPrime = 0x100000001B3;
    if (machineGuid.empty()) return 0;
    std::uint64_t hash = kOffsetBasis;
    for (const wchar_t unit : machineGuid) {
        const auto value = static_cast<std::uint16_t>(unit);
        hash = (hash ^ (value & 0xFF)) * kPrime;
        hash = (hash ^ (value >> 8)) * kPrime;
    }
    return hash;
}
