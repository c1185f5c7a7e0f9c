#include "brightness/fake_monitors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_monitors);

std::vector<FakeMonitor> g_monitors;

namespace {

constexpr std::uintptr_t kFirstMonitor = 0x100;
constexpr DWORD kRubbish = 0xDEADBEEF;

// What one fetch handed out.
struct Holding {
    std::size_t monitor;
    std::vector<HANDLE> handles;
};

std::vector<Holding> g_holdings;

std::size_t IndexOf(HMONITOR monitor) {
    return ValueOf(monitor) - kFirstMonitor;
}

FakeMonitor& Monitor(HMONITOR monitor) {
    return g_monitors.at(IndexOf(monitor));
}

std::string NameOf(std::size_t index) {
    std::string name = "M";
    name += std::to_string(index + 1);
    return name;
}

FakePhysical& Physical(HANDLE handle) {
    for (const Holding& holding : g_holdings) {
        const auto held = std::find(holding.handles.begin(), holding.handles.end(), handle);
        if (held == holding.handles.end()) continue;
        return g_monitors[holding.monitor].physical[static_cast<std::size_t>(held - holding.handles.begin())];
    }
    ADD_FAILURE() << "handle " << ValueOf(handle) << " is used without being held";
    static FakePhysical nobody;
    return nobody;
}

BOOL WINAPI FakeCount(HMONITOR monitor, DWORD* count) {
    const FakeMonitor& asked = Monitor(monitor);
    Record("count ", NameOf(IndexOf(monitor)));
    *count = asked.countable ? asked.countTold.value_or(static_cast<DWORD>(asked.physical.size())) : 2;
    return asked.countable;
}

void ExpectZeroFilled(const PHYSICAL_MONITOR* array, DWORD count) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(array);
    EXPECT_TRUE(std::all_of(bytes, bytes + count * sizeof(PHYSICAL_MONITOR),
                            [](unsigned char byte) { return byte == 0; }));
}

BOOL WINAPI FakeFetch(HMONITOR monitor, DWORD count, PHYSICAL_MONITOR* array) {
    const FakeMonitor& asked = Monitor(monitor);
    Record("fetch ", count, " of ", NameOf(IndexOf(monitor)));
    ExpectZeroFilled(array, count);
    if (!asked.fetchable) {
        for (DWORD i = 0; i < count; ++i)
            array[i].hPhysicalMonitor = MakeHandle<HANDLE>(kRubbish);
        return FALSE;
    }
    Holding holding = {IndexOf(monitor), {}};
    for (DWORD i = 0; i < count && i < asked.physical.size(); ++i) {
        holding.handles.push_back(MakeHandle<HANDLE>(asked.physical[i].handle));
        array[i].hPhysicalMonitor = holding.handles.back();
        // A description of full length has no terminating zero.
        WCHAR description[PHYSICAL_MONITOR_DESCRIPTION_SIZE] = {};
        asked.physical[i].description.copy(description, PHYSICAL_MONITOR_DESCRIPTION_SIZE);
        std::copy(std::begin(description), std::end(description), array[i].szPhysicalMonitorDescription);
    }
    g_holdings.push_back(holding);
    return TRUE;
}

BOOL WINAPI FakeDestroy(DWORD count, PHYSICAL_MONITOR* array) {
    std::vector<HANDLE> handles;
    for (DWORD i = 0; i < count; ++i)
        handles.push_back(array[i].hPhysicalMonitor);
    const auto held = std::find_if(g_holdings.begin(), g_holdings.end(),
                                   [&](const Holding& holding) { return holding.handles == handles; });
    if (held == g_holdings.end()) {
        ADD_FAILURE() << "handles are destroyed that are not held, or not all of one display monitor";
        return FALSE;
    }
    Record("destroy ", count, " of ", NameOf(held->monitor));
    g_holdings.erase(held);
    return TRUE;
}

BOOL WINAPI FakeCapabilities(HANDLE handle, DWORD* capabilities, DWORD* temperatures) {
    const FakePhysical& asked = Physical(handle);
    Record("capabilities ", asked.handle);
    *temperatures = kRubbish;
    *capabilities = asked.tellsCapabilities ? asked.capabilities : DWORD{MC_CAPS_BRIGHTNESS};
    return asked.tellsCapabilities;
}

BOOL WINAPI FakeRead(HANDLE handle, DWORD* minimum, DWORD* current, DWORD* maximum) {
    const FakePhysical& asked = Physical(handle);
    Record("read ", asked.handle);
    *minimum = asked.readable ? asked.minimum : 1;
    *current = asked.readable ? asked.current : 2;
    *maximum = asked.readable ? asked.maximum : 3;
    return asked.readable;
}

BOOL WINAPI FakeWrite(HANDLE handle, DWORD brightness) {
    FakePhysical& asked = Physical(handle);
    Record("write ", asked.handle, " ", brightness);
    if (asked.settable) asked.current = brightness;
    return asked.settable;
}

// Monitors may come and go during a visit, but no handle outlives the visit of its display monitor.
BOOL WINAPI FakeEnumDisplayMonitors(HDC dc, LPCRECT clip, MONITORENUMPROC visit, LPARAM context) {
    EXPECT_EQ(dc, nullptr);
    EXPECT_EQ(clip, nullptr);
    Record("visit all");
    for (std::size_t i = 0; i < g_monitors.size(); ++i) {
        EXPECT_TRUE(visit(MakeHandle<HMONITOR>(kFirstMonitor + i), nullptr, nullptr, context))
            << "the visit ends early";
        EXPECT_EQ(HandlesHeld(), 0) << "after the visit of " << NameOf(i);
    }
    return TRUE;
}

BOOL WINAPI FakeGetMonitorInfo(HMONITOR monitor, MONITORINFO* plain) {
    const FakeMonitor& asked = Monitor(monitor);
    Record("info ", NameOf(IndexOf(monitor)));
    EXPECT_EQ(plain->cbSize, sizeof(MONITORINFOEXW));
    auto* info = reinterpret_cast<MONITORINFOEXW*>(plain);
    const std::wstring told = asked.tellsInfo ? asked.device : L"RUBBISH";
    told.copy(info->szDevice, CCHDEVICENAME - 1);
    info->szDevice[told.size()] = L'\0';
    if (asked.tellsInfo && asked.primary) info->dwFlags |= MONITORINFOF_PRIMARY;
    return asked.tellsInfo;
}

BOOL WINAPI FakeEnumDisplaySettings(LPCWSTR device, DWORD which, DEVMODEW* mode) {
    EXPECT_EQ(which, ENUM_CURRENT_SETTINGS);
    EXPECT_EQ(mode->dmSize, sizeof(DEVMODEW));
    EXPECT_EQ(mode->dmDriverExtra, 0);
    Record("mode ", Narrow(device));
    const auto asked = std::find_if(g_monitors.begin(), g_monitors.end(),
                                    [&](const FakeMonitor& monitor) { return monitor.device == device; });
    if (asked == g_monitors.end()) return FALSE;
    mode->dmPelsWidth = asked->tellsMode ? asked->mode.dmPelsWidth : kRubbish;
    mode->dmPelsHeight = asked->tellsMode ? asked->mode.dmPelsHeight : kRubbish;
    mode->dmDisplayFrequency = asked->tellsMode ? asked->mode.dmDisplayFrequency : kRubbish;
    mode->dmBitsPerPel = asked->tellsMode ? asked->mode.dmBitsPerPel : kRubbish;
    return asked->tellsMode;
}

}  // namespace

AMBREL_SEAM(EnumDisplayMonitors, FakeEnumDisplayMonitors);
AMBREL_SEAM(GetMonitorInfoW, FakeGetMonitorInfo);
AMBREL_SEAM(EnumDisplaySettingsW, FakeEnumDisplaySettings);

int HandlesHeld() {
    std::size_t held = 0;
    for (const Holding& holding : g_holdings)
        held += holding.handles.size();
    return static_cast<int>(held);
}

MonitorFunctions FakeMonitorFunctions() {
    return {MakeHandle<HMODULE>(0xD2), &FakeCount, &FakeFetch, &FakeDestroy,
            &FakeCapabilities,         &FakeRead,  &FakeWrite};
}

void StartWithoutMonitors() {
    g_app = AppState{};
    g_monitorFunctions = FakeMonitorFunctions();
    g_monitors.clear();
    g_holdings.clear();
    g_calls.clear();
}
