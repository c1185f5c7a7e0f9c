#include "brightness/monitor_path.h"

#include "brightness/target_name.h"
#include "win32/platform.h"

namespace {

constexpr DWORD kMaxDevices = 256;  // sanity limit

}  // namespace

// The active monitors of a display are listed in the order of its physical monitors. If the list is shorter,
// its last monitor identifies the rest.
std::wstring MonitorDevicePath(const std::wstring& targetName) {
    std::wstring device;
    std::uint32_t index = 0;
    if (!ParseDdcTargetName(targetName, &device, &index)) return {};
    std::wstring path;
    std::uint32_t active = 0;
    for (DWORD i = 0; i < kMaxDevices && active <= index; ++i) {
        DISPLAY_DEVICEW monitor = {};
        monitor.cb = sizeof(monitor);
        if (EnumDisplayDevicesW(device.c_str(), i, &monitor, EDD_GET_DEVICE_INTERFACE_NAME) == FALSE) break;
        if ((monitor.StateFlags & DISPLAY_DEVICE_ACTIVE) == 0) continue;
        path = monitor.DeviceID;
        active += 1;
    }
    return path;
}
