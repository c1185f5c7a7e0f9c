#include "brightness/physical_monitors.h"

#include <new>

namespace {

// Sanity limit: no desktop has more.
constexpr DWORD kMaxMonitors = 4096;

}  // namespace

PhysicalMonitors::PhysicalMonitors(const MonitorFunctions* loaded, HMONITOR display) : functions(loaded) {
    DWORD found = 0;
    if (!functions->count(display, &found) || found == 0 || found > kMaxMonitors) return;
    monitors.reset(new (std::nothrow) PHYSICAL_MONITOR[found]());
    if (monitors != nullptr && functions->fetch(display, found, monitors.get())) count = found;
}

PhysicalMonitors::~PhysicalMonitors() {
    if (count != 0) functions->destroy(count, monitors.get());
}

bool HasBrightness(const MonitorFunctions& functions, HANDLE monitor) {
    DWORD capabilities = 0;
    DWORD colourTemperatures = 0;
    return functions.capabilities(monitor, &capabilities, &colourTemperatures) &&
           (capabilities & MC_CAPS_BRIGHTNESS) != 0;
}

bool ReadRange(const MonitorFunctions& functions, HANDLE monitor, MonitorRange* range) {
    return functions.brightness(monitor, &range->minimum, &range->current, &range->maximum) != FALSE;
}

MONITORINFOEXW InfoOf(HMONITOR display) {
    MONITORINFOEXW info = {};
    info.cbSize = sizeof(info);
    if (!GetMonitorInfoW(display, &info)) info.szDevice[0] = L'\0';
    return info;
}

std::wstring DdcTargetName(const wchar_t* device, DWORD index) {
    const std::wstring shown = device[0] != L'\0' ? device : L"UNKNOWN";
    return L"DXVA2:" + shown + L"#" + std::to_wstring(index);
}
