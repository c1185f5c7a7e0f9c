// Why not less: the report shows the current state of the machine, its displays and the registry, so each is
// queried once. Most of the report is not in files: its floor contains the calls to the registry and the
// system beside those to the log. A registry value is read into a buffer that is large enough, with one call.
// dwmapi.dll serves nothing but a report, which is rare, so it is not kept loaded; dxva2.dll is, as it serves
// every poll. Each display is queried for its physical monitors; there are none here, since a monitor's
// answer takes longer than everything else.
#include "floor_report.h"

#include "floor_files.h"

#include <physicalmonitorenumerationapi.h>

namespace {

using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
using IsCompositionEnabled = HRESULT(WINAPI*)(BOOL*);

void ReadValues(HKEY root, const wchar_t* path, const wchar_t* const* names, int count) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &key) != ERROR_SUCCESS) return;
    for (int i = 0; i < count; ++i) {
        BYTE value[2048];
        DWORD bytes = sizeof(value);
        RegQueryValueExW(key, names[i], nullptr, nullptr, value, &bytes);
    }
    RegCloseKey(key);
}

void ReadRegistry() {
    static constexpr const wchar_t* kGuid[] = {L"MachineGuid"};
    static constexpr const wchar_t* kWindows[] = {L"ProductName", L"DisplayVersion", L"UBR"};
    static constexpr const wchar_t* kBios[] = {L"SystemManufacturer", L"SystemProductName"};
    static constexpr const wchar_t* kCpu[] = {L"ProcessorNameString"};
    static constexpr const wchar_t* kRun[] = {L"Ambrel2"};
    ReadValues(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Cryptography", kGuid, 1);
    ReadValues(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", kWindows, 3);
    ReadValues(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\BIOS", kBios, 2);
    ReadValues(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", kCpu, 1);
    ReadValues(HKEY_CURRENT_USER, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run", kRun, 1);
}

BOOL CALLBACK ReadDisplay(HMONITOR display, HDC, RECT*, LPARAM) {
    MONITORINFOEXW info = {};
    info.cbSize = sizeof(info);
    GetMonitorInfoW(display, &info);
    DEVMODEW mode = {};
    mode.dmSize = sizeof(mode);
    EnumDisplaySettingsW(info.szDevice, ENUM_CURRENT_SETTINGS, &mode);
    static const auto countMonitors = reinterpret_cast<decltype(&GetNumberOfPhysicalMonitorsFromHMONITOR)>(
        GetProcAddress(LoadLibraryExW(L"dxva2.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32),
                       "GetNumberOfPhysicalMonitorsFromHMONITOR"));
    DWORD count = 0;
    countMonitors(display, &count);
    return TRUE;
}

void ReadDisplays() {
    EnumDisplayMonitors(nullptr, nullptr, ReadDisplay, 0);
    DISPLAY_DEVICEW device = {};
    device.cb = sizeof(device);
    for (DWORD i = 0; EnumDisplayDevicesW(nullptr, i, &device, 0); ++i) {
    }
}

void ReadSystem() {
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    reinterpret_cast<GetVersion>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion"))(&version);
    SYSTEM_INFO system;
    GetNativeSystemInfo(&system);
    MEMORYSTATUSEX memory = {};
    memory.dwLength = sizeof(memory);
    GlobalMemoryStatusEx(&memory);
    wchar_t locale[LOCALE_NAME_MAX_LENGTH];
    GetUserDefaultLocaleName(locale, LOCALE_NAME_MAX_LENGTH);
    TIME_ZONE_INFORMATION zone;
    GetTimeZoneInformation(&zone);
    SYSTEMTIME now;
    GetLocalTime(&now);
}

void ReadComposition() {
    HMODULE dwmapi = LoadLibraryExW(L"dwmapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    BOOL enabled = FALSE;
    reinterpret_cast<IsCompositionEnabled>(GetProcAddress(dwmapi, "DwmIsCompositionEnabled"))(&enabled);
    FreeLibrary(dwmapi);
}

void ReadOwnFile() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    GetFileAttributesW(path);
}

}  // namespace

void FloorReport(const wchar_t* logPath) {
    FloorReadTail(logPath);
    ReadRegistry();
    ReadSystem();
    ReadComposition();
    ReadDisplays();
    ReadOwnFile();
}
