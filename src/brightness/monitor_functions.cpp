#include "brightness/monitor_functions.h"

#include "win32/guards.h"
#include "win32/system_library.h"

MonitorFunctions g_monitorFunctions;

namespace {

// The release thread at the end of a session may be the first to load the library.
SRWLOCK g_loadLock = SRWLOCK_INIT;

template <typename Function>
bool Find(HMODULE module, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(GetProcAddress(module, name));
    return *function != nullptr;
}

bool FindAll(MonitorFunctions* f) {
    return Find(f->module, "GetNumberOfPhysicalMonitorsFromHMONITOR",
                &f->getNumberOfPhysicalMonitorsFromHMONITOR) &&
           Find(f->module, "GetPhysicalMonitorsFromHMONITOR", &f->getPhysicalMonitorsFromHMONITOR) &&
           Find(f->module, "DestroyPhysicalMonitors", &f->destroyPhysicalMonitors) &&
           Find(f->module, "GetMonitorCapabilities", &f->getMonitorCapabilities) &&
           Find(f->module, "GetMonitorBrightness", &f->getMonitorBrightness) &&
           Find(f->module, "SetMonitorBrightness", &f->setMonitorBrightness);
}

}  // namespace

const MonitorFunctions* LoadedMonitorFunctions() {
    const ExclusiveLock lock(&g_loadLock);
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
