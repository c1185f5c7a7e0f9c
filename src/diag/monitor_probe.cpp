#include "diag/monitor_probe.h"

#include "brightness/physical_monitors.h"

namespace {

void ProbeMode(MonitorProbe* probe) {
    DEVMODEW mode = {};
    mode.dmSize = sizeof(mode);
    if (!EnumDisplaySettingsW(probe->deviceName.c_str(), ENUM_CURRENT_SETTINGS, &mode)) return;
    probe->width = mode.dmPelsWidth;
    probe->height = mode.dmPelsHeight;
    probe->refresh = mode.dmDisplayFrequency;
    probe->bitsPerPixel = mode.dmBitsPerPel;
}

void ProbeBrightness(const MonitorFunctions& functions, HANDLE monitor, MonitorProbe* probe) {
    probe->brightnessCapable = IsBrightnessSupported(functions, monitor);
    MonitorBrightness read;
    if (!probe->brightnessCapable || !ReadBrightness(functions, monitor, &read)) return;
    probe->minimum = read.minimum;
    probe->current = read.current;
    probe->maximum = read.maximum;
}

void ProbeFirstPhysicalMonitor(HMONITOR display, MonitorProbe* probe) {
    const MonitorFunctions* functions = LoadedMonitorFunctions();
    if (functions == nullptr) return;
    const PhysicalMonitors physical(functions, display);
    if (physical.count == 0) return;
    // The structure is packed, so its text may be misaligned, and it is not terminated at full length.
    wchar_t description[PHYSICAL_MONITOR_DESCRIPTION_SIZE + 1] = {};
    for (int i = 0; i < PHYSICAL_MONITOR_DESCRIPTION_SIZE; ++i) {
        description[i] = physical.monitors[0].szPhysicalMonitorDescription[i];
    }
    probe->description = description;
    ProbeBrightness(*functions, physical.HandleOf(0), probe);
}

}  // namespace

BOOL CALLBACK ProbeMonitor(HMONITOR display, HDC, RECT*, LPARAM context) {
    auto* list = reinterpret_cast<MonitorProbeList*>(context);
    if (list == nullptr) return TRUE;
    const MONITORINFOEXW info = ReadMonitorInfo(display);
    MonitorProbe probe;
    probe.deviceName = info.szDevice;
    probe.primary = (info.dwFlags & MONITORINFOF_PRIMARY) != 0;
    ProbeMode(&probe);
    ProbeFirstPhysicalMonitor(display, &probe);
    probe.internal = probe.description.find(L"Internal") != std::wstring::npos;
    list->push_back(probe);
    return TRUE;
}
