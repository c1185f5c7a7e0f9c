#include "brightness/physical_monitors.h"

#include <new>

#include "app/state/app_state.h"
#include "win32/system_library.h"

namespace {

// No desktop has more; a driver that says so is not believed.
constexpr DWORD kMostMonitors = 4096;

template <typename Function>
bool Find(HMODULE module, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(GetProcAddress(module, name));
    return *function != nullptr;
}

bool FindAll(MonitorFunctions* f) {
    return Find(f->module, "GetNumberOfPhysicalMonitorsFromHMONITOR", &f->count) &&
           Find(f->module, "GetPhysicalMonitorsFromHMONITOR", &f->fetch) &&
           Find(f->module, "DestroyPhysicalMonitors", &f->destroy) &&
           Find(f->module, "GetMonitorCapabilities", &f->capabilities) &&
           Find(f->module, "GetMonitorBrightness", &f->brightness) &&
           Find(f->module, "SetMonitorBrightness", &f->setBrightness);
}

}  // namespace

const MonitorFunctions* LoadedMonitorFunctions() {
    MonitorFunctions* functions = &g_app.monitorFunctions;
    if (functions->module == nullptr) {
        MonitorFunctions found;
        found.module = LoadSystemLibrary(L"dxva2.dll");
        if (found.module == nullptr) return nullptr;
        if (!FindAll(&found)) {
            FreeLibrary(found.module);
            return nullptr;
        }
        *functions = found;
    }
    return functions;
}

PhysicalMonitors::PhysicalMonitors(const MonitorFunctions* loaded, HMONITOR display) : functions(loaded) {
    DWORD found = 0;
    if (!functions->count(display, &found) || found == 0 || found > kMostMonitors) return;
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
