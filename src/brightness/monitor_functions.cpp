#include "brightness/monitor_functions.h"

#include "win32/guards.h"
#include "win32/system_library.h"

MonitorFunctions g_monitorFunctions;

namespace {

// The release at a session's end may be the first to load the library, on a thread of its own.
SRWLOCK g_loading = SRWLOCK_INIT;

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
    const ExclusiveLock lock(&g_loading);
    if (g_monitorFunctions.module == nullptr) {
        MonitorFunctions found;
        found.module = LoadSystemLibrary(L"dxva2.dll");
        if (found.module == nullptr) return nullptr;
        if (!FindAll(&found)) {
            FreeLibrary(found.module);
            return nullptr;
        }
        g_monitorFunctions = found;
    }
    return &g_monitorFunctions;
}
