#include "diag/fake_machine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "diag/monitor_probe.h"
#include "support/call_record.h"
#include "support/fake_libraries.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_machine);

FakeMachine g_machine;

namespace {

void WINAPI FakeGetLocalTime(SYSTEMTIME* now) {
    *now = g_machine.now;
}

ULONGLONG WINAPI FakeGetTickCount64() {
    return g_machine.tick;
}

void WINAPI FakeGetNativeSystemInfo(SYSTEM_INFO* info) {
    *info = g_machine.system;
}

BOOL WINAPI FakeGlobalMemoryStatusEx(MEMORYSTATUSEX* memory) {
    EXPECT_EQ(memory->dwLength, 64U);
    // A failed call may still have written.
    memory->ullTotalPhys = g_machine.memoryBytes;
    memory->ullAvailPhys = 1;
    return g_machine.memoryKnown;
}

int WINAPI FakeGetUserDefaultLocaleName(wchar_t* name, int capacity) {
    EXPECT_EQ(capacity, 85);
    std::copy(g_machine.localeName.begin(), g_machine.localeName.end(), name);
    name[g_machine.localeName.size()] = L'\0';
    return g_machine.localeAnswer;
}

DWORD WINAPI FakeGetTimeZoneInformation(TIME_ZONE_INFORMATION* zone) {
    std::fill(std::begin(zone->DaylightName), std::end(zone->DaylightName), L'D');
    std::fill(std::begin(zone->StandardName), std::end(zone->StandardName), L'\0');
    // The name is followed by characters, not by a terminator.
    std::memset(&zone->StandardDate, 0x41, sizeof(zone->StandardDate));
    std::copy(g_machine.timeZoneName.begin(), g_machine.timeZoneName.end(), zone->StandardName);
    return g_machine.timeZoneAnswer;
}

HRESULT WINAPI FakeDwmIsCompositionEnabled(BOOL* enabled) {
    *enabled = g_machine.composition;
    return g_machine.compositionStatus;
}

BOOL WINAPI FakeEnumDisplayMonitors(HDC dc, const RECT* clip, MONITORENUMPROC procedure, LPARAM context) {
    EXPECT_EQ(dc, nullptr);
    EXPECT_EQ(clip, nullptr);
    RECT area = {0, 0, 1920, 1080};
    for (int i = 1; i <= g_machine.displays; ++i) {
        if (!procedure(MakeHandle<HMONITOR>(static_cast<std::uintptr_t>(i)), nullptr, &area, context)) break;
    }
    return g_machine.enumerationWorks;
}

BOOL WINAPI FakeEnumDisplayDevices(const wchar_t* device, DWORD index, DISPLAY_DEVICEW* out, DWORD flags) {
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(out->cb, 840U);
    Record("adapter ", index);
    if (index >= g_machine.adapters.size()) return FALSE;
    const FakeAdapter& adapter = g_machine.adapters[index];
    out->StateFlags = DISPLAY_DEVICE_VGA_COMPATIBLE;
    if (adapter.attached) out->StateFlags |= DISPLAY_DEVICE_ATTACHED_TO_DESKTOP;
    std::copy(adapter.name.begin(), adapter.name.end(), out->DeviceString);
    out->DeviceString[adapter.name.size()] = L'\0';
    return TRUE;
}

DWORD WINAPI FakeGetFileAttributes(const wchar_t* path) {
    return !g_machine.existingFile.empty() && path == g_machine.existingFile ? FILE_ATTRIBUTE_ARCHIVE
                                                                             : INVALID_FILE_ATTRIBUTES;
}

}  // namespace

AMBREL_SEAM(GetLocalTime, FakeGetLocalTime);
AMBREL_SEAM(GetTickCount64, FakeGetTickCount64);
AMBREL_SEAM(GetNativeSystemInfo, FakeGetNativeSystemInfo);
AMBREL_SEAM(GlobalMemoryStatusEx, FakeGlobalMemoryStatusEx);
AMBREL_SEAM(GetUserDefaultLocaleName, FakeGetUserDefaultLocaleName);
AMBREL_SEAM(GetTimeZoneInformation, FakeGetTimeZoneInformation);
AMBREL_SEAM(EnumDisplayMonitors, FakeEnumDisplayMonitors);
AMBREL_SEAM(EnumDisplayDevicesW, FakeEnumDisplayDevices);
AMBREL_SEAM(GetFileAttributesW, FakeGetFileAttributes);

// Replaces the probe, which calls dxva2.dll.
AMBREL_REPLACE(BOOL CALLBACK, ProbeMonitor, (HMONITOR display, HDC, RECT*, LPARAM context)) {
    MonitorProbe probe;
    probe.deviceName = L"DISPLAY" + std::to_wstring(ValueOf(display));
    reinterpret_cast<MonitorProbeList*>(context)->push_back(probe);
    return TRUE;
}

void InstallCompositionLibrary() {
    RemoveLibraries();
    LibraryFunctions functions;
    if (g_machine.compositionCallExists)
        functions["DwmIsCompositionEnabled"] = EntryPoint(&FakeDwmIsCompositionEnabled);
    InstallLibrary(L"dwmapi.dll", functions);
}

void ResetMachine() {
    g_machine = FakeMachine{};
    g_machine.now = {.wYear = 2026,
                     .wMonth = 3,
                     .wDayOfWeek = 6,
                     .wDay = 7,
                     .wHour = 9,
                     .wMinute = 5,
                     .wSecond = 2,
                     .wMilliseconds = 345};
    g_machine.tick = 123456789012;
    g_machine.system.wProcessorArchitecture = PROCESSOR_ARCHITECTURE_ARM64;
    g_machine.system.dwNumberOfProcessors = 12;
    g_machine.memoryBytes = 17179869184;
    g_machine.localeName = L"en-GB";
    g_machine.localeAnswer = 6;
    g_machine.timeZoneName = L"GMT Standard Time";
    InstallCompositionLibrary();
}
