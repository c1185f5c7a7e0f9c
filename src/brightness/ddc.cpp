#include "brightness/ddc.h"

#include <algorithm>

#include "brightness/physical_monitors.h"
#include "brightness/target_name.h"

namespace {

struct SetRequest {
    const std::wstring* name;
    std::uint32_t percent;
    bool done;
};

// The capability is not checked again: a monitor whose brightness can be read is set.
bool SetMonitor(const MonitorFunctions& functions, HANDLE monitor, std::uint32_t percent) {
    MonitorBrightness read;
    if (!ReadBrightness(functions, monitor, &read)) return false;
    return functions.setMonitorBrightness(monitor, RawBrightness(read.minimum, read.maximum, percent)) !=
           FALSE;
}

BOOL CALLBACK SetMatchingMonitor(HMONITOR display, HDC, RECT*, LPARAM context) {
    auto* request = reinterpret_cast<SetRequest*>(context);
    const MonitorFunctions* functions = LoadedMonitorFunctions();
    if (functions == nullptr) return TRUE;
    const PhysicalMonitors physical(functions, display);
    if (physical.count == 0) return TRUE;
    const MONITORINFOEXW info = ReadMonitorInfo(display);
    for (DWORD i = 0; i < physical.count && !request->done; ++i) {
        if (DdcTargetName(info.szDevice, i) != *request->name) continue;
        request->done = SetMonitor(*functions, physical.HandleOf(i), request->percent);
    }
    return TRUE;
}

}  // namespace

BOOL CALLBACK EnumerateDdcTargets(HMONITOR display, HDC, RECT*, LPARAM context) {
    auto* list = reinterpret_cast<DisplayTargetList*>(context);
    const MonitorFunctions* functions = LoadedMonitorFunctions();
    if (list == nullptr || functions == nullptr) return TRUE;
    const PhysicalMonitors physical(functions, display);
    if (physical.count == 0) return TRUE;
    const MONITORINFOEXW info = ReadMonitorInfo(display);
    for (DWORD i = 0; i < physical.count; ++i) {
        HANDLE monitor = physical.HandleOf(i);
        MonitorBrightness read;
        if (!IsBrightnessSupported(*functions, monitor) || !ReadBrightness(*functions, monitor, &read))
            continue;
        list->push_back({TargetKind::DdcMonitor, DdcTargetName(info.szDevice, i), read.minimum, read.maximum,
                         PercentOfRange(read.minimum, read.current, read.maximum)});
    }
    return TRUE;
}

bool SetDdcBrightness(const std::wstring& name, std::uint32_t percent) {
    SetRequest request = {&name, std::min(percent, kMaxPercent), false};
    EnumDisplayMonitors(nullptr, nullptr, SetMatchingMonitor, reinterpret_cast<LPARAM>(&request));
    return request.done;
}

std::uint32_t PercentOfRange(std::uint32_t minimum, std::uint32_t current, std::uint32_t maximum) {
    if (maximum <= minimum || current >= maximum) return kMaxPercent;
    if (current <= minimum) return 0;
    const std::uint64_t range = maximum - minimum;
    return static_cast<std::uint32_t>((std::uint64_t{current - minimum} * 100 + range / 2) / range);
}

std::uint32_t RawBrightness(std::uint32_t minimum, std::uint32_t maximum, std::uint32_t percent) {
    if (maximum <= minimum) return maximum;
    const std::uint64_t range = maximum - minimum;
    return static_cast<std::uint32_t>((range * percent + 50) / 100 + minimum);
}
