#include "brightness/monitor_path.h"

#include <iterator>

#include "brightness/physical_monitors.h"
#include "win32/platform.h"

namespace {

// The device name and the index in a DDC/CI target's name. False for other names.
bool SplitTargetName(const std::wstring& name, std::wstring* device, DWORD* index) {
    const std::size_t prefix = std::size(kDdcNamePrefix) - 1;
    const std::size_t mark = name.rfind(L'#');
    if (name.compare(0, prefix, kDdcNamePrefix) != 0 || mark == std::wstring::npos) return false;
    *device = name.substr(prefix, mark - prefix);
    *index = static_cast<DWORD>(std::wcstoul(name.c_str() + mark + 1, nullptr, 10));
    return true;
}

}  // namespace

// The active monitors of a display are listed in the order of its physical monitors. If the list is shorter,
// its last monitor identifies the rest.
std::wstring MonitorDevicePath(const std::wstring& targetName) {
    std::wstring device;
    DWORD index = 0;
    if (!SplitTargetName(targetName, &device, &index)) return {};
    std::wstring path;
    DWORD active = 0;
    for (DWORD i = 0; active <= index; ++i) {
        DISPLAY_DEVICEW monitor = {};
        monitor.cb = sizeof(monitor);
        if (EnumDisplayDevicesW(device.c_str(), i, &monitor, EDD_GET_DEVICE_INTERFACE_NAME) == FALSE) break;
        if ((monitor.StateFlags & DISPLAY_DEVICE_ACTIVE) == 0) continue;
        path = monitor.DeviceID;
        active += 1;
    }
    return path;
}
