#include <highlevelmonitorconfigurationapi.h>
#include <physicalmonitorenumerationapi.h>

#include <cstring>

#include "check.h"

namespace {

struct Library {
    decltype(&GetNumberOfPhysicalMonitorsFromHMONITOR) count;
    decltype(&GetPhysicalMonitorsFromHMONITOR) fetch;
    decltype(&GetMonitorCapabilities) capabilities;
    decltype(&GetMonitorBrightness) read;
    decltype(&SetMonitorBrightness) set;
    decltype(&DestroyPhysicalMonitors) destroy;
    decltype(&DestroyPhysicalMonitor) destroyOne;
};

template <typename Function>
void Find(HMODULE module, const char* name, Function& function) {
    void* const address = module ? reinterpret_cast<void*>(GetProcAddress(module, name)) : nullptr;
    function = reinterpret_cast<Function>(address);
    if (!function) {
        PrintRow({L"lacks", std::wstring(name, name + std::strlen(name))});
    }
}

Library Load() {
    const HMODULE module = LoadLibraryExW(L"dxva2.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    Library library = {};
    Find(module, "GetNumberOfPhysicalMonitorsFromHMONITOR", library.count);
    Find(module, "GetPhysicalMonitorsFromHMONITOR", library.fetch);
    Find(module, "GetMonitorCapabilities", library.capabilities);
    Find(module, "GetMonitorBrightness", library.read);
    Find(module, "SetMonitorBrightness", library.set);
    Find(module, "DestroyPhysicalMonitors", library.destroy);
    Find(module, "DestroyPhysicalMonitor", library.destroyOne);
    return library;
}

const Library& Loaded() {
    static const Library library = Load();
    return library;
}

bool IsComplete() {
    const Library& library = Loaded();
    return library.count && library.fetch && library.capabilities && library.read && library.set &&
           library.destroy && library.destroyOne;
}

// Opens the physical monitors of the first display monitor. On failure prints the error and returns false.
bool Fetch(std::vector<PHYSICAL_MONITOR>& monitors) {
    const HMONITOR display = MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY);
    DWORD count = 0;
    if (!Loaded().count(display, &count)) {
        PrintRow({L"count", GetLastError()});
        return false;
    }
    if (count == 0) {
        return false;
    }
    monitors.assign(count, PHYSICAL_MONITOR{});
    if (!Loaded().fetch(display, count, monitors.data())) {
        PrintRow({L"fetch", GetLastError()});
        return false;
    }
    return true;
}

void Destroy(std::vector<PHYSICAL_MONITOR>& monitors) {
    Loaded().destroy(static_cast<DWORD>(monitors.size()), monitors.data());
}

}  // namespace

int ListMonitors(const Arguments&) {
    std::vector<PHYSICAL_MONITOR> monitors;
    if (!IsComplete() || !Fetch(monitors)) {
        return kToolNotFound;
    }
    for (const PHYSICAL_MONITOR& monitor : monitors) {
        const HANDLE handle = monitor.hPhysicalMonitor;
        wchar_t description[PHYSICAL_MONITOR_DESCRIPTION_SIZE];
        CopyMemory(description, &monitor.szPhysicalMonitorDescription, sizeof(description));
        DWORD capabilities = 0;
        DWORD temperatures = 0;
        DWORD minimum = 0;
        DWORD current = 0;
        DWORD maximum = 0;
        const DWORD capabilitiesError =
            Loaded().capabilities(handle, &capabilities, &temperatures) ? 0 : GetLastError();
        const DWORD readError = Loaded().read(handle, &minimum, &current, &maximum) ? 0 : GetLastError();
        PrintRow({description, reinterpret_cast<UINT_PTR>(handle), capabilitiesError, capabilities, readError,
                  minimum, current, maximum});
    }
    Destroy(monitors);
    return kToolOk;
}

int SetMonitor(const Arguments& arguments) {
    std::vector<PHYSICAL_MONITOR> monitors;
    if (!IsComplete() || !Fetch(monitors)) {
        return kToolNotFound;
    }
    const size_t index = static_cast<size_t>(Number(arguments[0]));
    if (index < monitors.size()) {
        const HANDLE handle = monitors[index].hPhysicalMonitor;
        const BOOL set = Loaded().set(handle, static_cast<DWORD>(Number(arguments[1])));
        PrintRow({set ? 0 : GetLastError()});
    }
    Destroy(monitors);
    return kToolOk;
}

int MisuseMonitors(const Arguments& arguments) {
    std::vector<PHYSICAL_MONITOR> monitors;
    if (!IsComplete() || !Fetch(monitors)) {
        return kToolNotFound;
    }
    if (!arguments.empty()) {
        const HANDLE handle = monitors[0].hPhysicalMonitor;
        Destroy(monitors);
        const BOOL set = Loaded().set(handle, 1);
        const DWORD error = GetLastError();
        const BOOL destroyed = Loaded().destroyOne(handle);
        PrintRow({set, error, destroyed});
    }
    return kToolOk;
}
