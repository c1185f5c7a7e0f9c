#include "brightness/physical_monitors.h"

#include <new>

namespace {

// Sanity limit for the number that a driver reports.
constexpr DWORD kMaxMonitors = 4096;

}  // namespace

PhysicalMonitors::PhysicalMonitors(const MonitorFunctions* loaded, HMONITOR display) : functions(loaded) {
    DWORD found = 0;
    if (!functions->getNumberOfPhysicalMonitorsFromHMONITOR(display, &found)) return;
    if (found == 0 || found > kMaxMonitors) return;
    monitors.reset(new (std::nothrow) PHYSICAL_MONITOR[found]());
    if (monitors == nullptr) return;
    if (functions->getPhysicalMonitorsFromHMONITOR(display, found, monitors.get())) count = found;
}

PhysicalMonitors::~PhysicalMonitors() {
    if (count != 0) functions->destroyPhysicalMonitors(count, monitors.get());
}

bool IsBrightnessSupported(const MonitorFunctions& functions, HANDLE monitor) {
    DWORD capabilities = 0;
    DWORD colourTemperatures = 0;
    return functions.getMonitorCapabilities(monitor, &capabilities, &colourTemperatures) &&
           (capabilities & MC_CAPS_BRIGHTNESS) != 0;
}

bool ReadBrightness(const MonitorFunctions& functions, HANDLE monitor, MonitorBrightness* read) {
    return functions.getMonitorBrightness(monitor, &read->minimum, &read->current, &read->maximum) != FALSE;
}

MONITORINFOEXW ReadMonitorInfo(HMONITOR display) {
    MONITORINFOEXW info = {};
    info.cbSize = sizeof(info);
    if (!GetMonitorInfoW(display, &info)) info.szDevice[0] = L'\0';
    return info;
}
