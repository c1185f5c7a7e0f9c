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
constexpr DWORD kGarbage = 0xDEADBEEF;

// The handles that one call of GetPhysicalMonitorsFromHMONITOR returned.
struct FetchedMonitors {
    std::size_t monitor;
    std::vector<HANDLE> handles;
};

std::vector<FetchedMonitors> g_fetched;

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
    for (const FetchedMonitors& fetched : g_fetched) {
        const auto held = std::find(fetched.handles.begin(), fetched.handles.end(), handle);
        if (held == fetched.handles.end()) continue;
        return g_monitors[fetched.monitor].physical[static_cast<std::size_t>(held - fetched.handles.begin())];
    }
    ADD_FAILURE() << "handle " << ValueOf(handle) << " is used and not open";
    static FakePhysical none;
    return none;
}

BOOL WINAPI FakeCount(HMONITOR monitor, DWORD* count) {
    const FakeMonitor& fake = Monitor(monitor);
    Record("count ", NameOf(IndexOf(monitor)));
    *count = fake.countable ? fake.reportedCount.value_or(static_cast<DWORD>(fake.physical.size())) : 2;
    return fake.countable;
}

void ExpectZeroFilled(const PHYSICAL_MONITOR* array, DWORD count) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(array);
    EXPECT_TRUE(std::all_of(bytes, bytes + count * sizeof(PHYSICAL_MONITOR),
                            [](unsigned char byte) { return byte == 0; }));
}

BOOL WINAPI FakeFetch(HMONITOR monitor, DWORD count, PHYSICAL_MONITOR* array) {
    const FakeMonitor& fake = Monitor(monitor);
    Record("fetch ", count, " of ", NameOf(IndexOf(monitor)));
    ExpectZeroFilled(array, count);
    if (!fake.fetchable) {
        for (DWORD i = 0; i < count; ++i)
            array[i].hPhysicalMonitor = MakeHandle<HANDLE>(kGarbage);
        return FALSE;
    }
    FetchedMonitors fetched = {IndexOf(monitor), {}};
    for (DWORD i = 0; i < count && i < fake.physical.size(); ++i) {
        fetched.handles.push_back(MakeHandle<HANDLE>(fake.physical[i].handle));
        array[i].hPhysicalMonitor = fetched.handles.back();
        // A description of full length has no terminating zero.
        WCHAR description[PHYSICAL_MONITOR_DESCRIPTION_SIZE] = {};
        fake.physical[i].description.copy(description, PHYSICAL_MONITOR_DESCRIPTION_SIZE);
        std::copy(std::begin(description), std::end(description), array[i].szPhysicalMonitorDescription);
    }
    g_fetched.push_back(fetched);
    return TRUE;
}

BOOL WINAPI FakeDestroy(DWORD count, PHYSICAL_MONITOR* array) {
    std::vector<HANDLE> handles;
    for (DWORD i = 0; i < count; ++i)
        handles.push_back(array[i].hPhysicalMonitor);
    const auto held = std::find_if(g_fetched.begin(), g_fetched.end(), [&](const FetchedMonitors& fetched) {
        return fetched.handles == handles;
    });
    if (held == g_fetched.end()) {
        ADD_FAILURE() << "the destroyed handles are not all the open handles of one display monitor";
        return FALSE;
    }
    Record("destroy ", count, " of ", NameOf(held->monitor));
    g_fetched.erase(held);
    return TRUE;
}

BOOL WINAPI FakeCapabilities(HANDLE handle, DWORD* capabilities, DWORD* temperatures) {
    const FakePhysical& fake = Physical(handle);
    Record("capabilities ", fake.handle);
    *temperatures = kGarbage;
    *capabilities = fake.capabilitiesReadable ? fake.capabilities : DWORD{MC_CAPS_BRIGHTNESS};
    return fake.capabilitiesReadable;
}

BOOL WINAPI FakeRead(HANDLE handle, DWORD* minimum, DWORD* current, DWORD* maximum) {
    const FakePhysical& fake = Physical(handle);
    Record("read ", fake.handle);
    *minimum = fake.readable ? fake.minimum : 1;
    *current = fake.readable ? fake.current : 2;
    *maximum = fake.readable ? fake.maximum : 3;
    return fake.readable;
}

BOOL WINAPI FakeWrite(HANDLE handle, DWORD brightness) {
    FakePhysical& fake = Physical(handle);
    Record("write ", fake.handle, " ", brightness);
    if (fake.settable) fake.current = brightness;
    return fake.settable;
}

// Monitors may connect and disconnect during the enumeration. No handle may outlive the callback for its
// display monitor.
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
    const FakeMonitor& fake = Monitor(monitor);
    Record("info ", NameOf(IndexOf(monitor)));
    EXPECT_EQ(plain->cbSize, sizeof(MONITORINFOEXW));
    auto* info = reinterpret_cast<MONITORINFOEXW*>(plain);
    const std::wstring device = fake.infoReadable ? fake.device : L"GARBAGE";
    device.copy(info->szDevice, CCHDEVICENAME - 1);
    info->szDevice[device.size()] = L'\0';
    if (fake.infoReadable && fake.primary) info->dwFlags |= MONITORINFOF_PRIMARY;
    return fake.infoReadable;
}

BOOL WINAPI FakeEnumDisplaySettings(LPCWSTR device, DWORD which, DEVMODEW* mode) {
    EXPECT_EQ(which, ENUM_CURRENT_SETTINGS);
    EXPECT_EQ(mode->dmSize, sizeof(DEVMODEW));
    EXPECT_EQ(mode->dmDriverExtra, 0);
    Record("mode ", Narrow(device));
    const auto fake = std::find_if(g_monitors.begin(), g_monitors.end(),
                                   [&](const FakeMonitor& monitor) { return monitor.device == device; });
    if (fake == g_monitors.end()) return FALSE;
    mode->dmPelsWidth = fake->modeReadable ? fake->mode.dmPelsWidth : kGarbage;
    mode->dmPelsHeight = fake->modeReadable ? fake->mode.dmPelsHeight : kGarbage;
    mode->dmDisplayFrequency = fake->modeReadable ? fake->mode.dmDisplayFrequency : kGarbage;
    mode->dmBitsPerPel = fake->modeReadable ? fake->mode.dmBitsPerPel : kGarbage;
    return fake->modeReadable;
}

}  // namespace

AMBREL_SEAM(EnumDisplayMonitors, FakeEnumDisplayMonitors);
AMBREL_SEAM(GetMonitorInfoW, FakeGetMonitorInfo);
AMBREL_SEAM(EnumDisplaySettingsW, FakeEnumDisplaySettings);

int HandlesHeld() {
    std::size_t held = 0;
    for (const FetchedMonitors& fetched : g_fetched)
        held += fetched.handles.size();
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
    g_fetched.clear();
    g_calls.clear();
}
