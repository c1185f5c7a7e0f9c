// Why not less: Windows does not announce each monitor that is connected or disconnected. So every poll
// queries WMI for the panels and every display for its physical monitors; a handle that outlived the poll
// would not notice a monitor that was replaced. A monitor's brightness may only be read if its capabilities
// contain it.
#include "floor_polls.h"

#include <highlevelmonitorconfigurationapi.h>
#include <objbase.h>
#include <oleauto.h>
#include <physicalmonitorenumerationapi.h>
#include <wbemcli.h>

namespace {

constexpr DWORD kMaxMonitors = 64;

struct MonitorCalls {
    decltype(&GetNumberOfPhysicalMonitorsFromHMONITOR) count;
    decltype(&GetPhysicalMonitorsFromHMONITOR) open;
    decltype(&DestroyPhysicalMonitors) close;
    decltype(&GetMonitorCapabilities) capabilities;
    decltype(&GetMonitorBrightness) read;
};

template <typename Function>
void Find(HMODULE module, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(GetProcAddress(module, name));
}

MonitorCalls g_dxva2;

void LoadDxva2Once() {
    if (g_dxva2.read != nullptr) return;
    HMODULE module = LoadLibraryExW(L"dxva2.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    Find(module, "GetNumberOfPhysicalMonitorsFromHMONITOR", &g_dxva2.count);
    Find(module, "GetPhysicalMonitorsFromHMONITOR", &g_dxva2.open);
    Find(module, "DestroyPhysicalMonitors", &g_dxva2.close);
    Find(module, "GetMonitorCapabilities", &g_dxva2.capabilities);
    Find(module, "GetMonitorBrightness", &g_dxva2.read);
}

BOOL CALLBACK ReadMonitors(HMONITOR display, HDC, RECT*, LPARAM answered) {
    static PHYSICAL_MONITOR monitors[kMaxMonitors];
    DWORD count = 0;
    if (!g_dxva2.count(display, &count) || count == 0 || count > kMaxMonitors) return TRUE;
    if (!g_dxva2.open(display, count, monitors)) return TRUE;
    MONITORINFOEXW info = {};
    info.cbSize = sizeof(info);
    GetMonitorInfoW(display, &info);
    for (DWORD i = 0; i < count; ++i) {
        DWORD capabilities = 0, temperatures = 0, minimum = 0, current = 0, maximum = 0;
        if (g_dxva2.capabilities(monitors[i].hPhysicalMonitor, &capabilities, &temperatures) &&
            (capabilities & MC_CAPS_BRIGHTNESS) != 0 &&
            g_dxva2.read(monitors[i].hPhysicalMonitor, &minimum, &current, &maximum)) {
            *reinterpret_cast<int*>(answered) += 1;
        }
    }
    g_dxva2.close(count, monitors);
    return TRUE;
}

IWbemServices* Connect(IWbemLocator** locator) {
    if (FAILED(CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                reinterpret_cast<void**>(locator)))) {
        return nullptr;
    }
    IWbemServices* services = nullptr;
    BSTR space = SysAllocString(L"ROOT\\WMI");
    (*locator)->ConnectServer(space, nullptr, nullptr, nullptr, 0, nullptr, nullptr, &services);
    SysFreeString(space);
    if (services != nullptr) {
        CoSetProxyBlanket(services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                          RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    }
    return services;
}

int ReadResults(IEnumWbemClassObject* results) {
    int answered = 0;
    IWbemClassObject* object = nullptr;
    ULONG returned = 0;
    while (SUCCEEDED(results->Next(1500, 1, &object, &returned)) && object != nullptr) {
        VARIANT name, brightness;
        VariantInit(&name);
        VariantInit(&brightness);
        object->Get(L"InstanceName", 0, &name, nullptr, nullptr);
        object->Get(L"CurrentBrightness", 0, &brightness, nullptr, nullptr);
        VariantClear(&name);
        VariantClear(&brightness);
        object->Release();
        object = nullptr;
        answered += 1;
    }
    return answered;
}

int ReadPanels() {
    int answered = 0;
    IWbemLocator* locator = nullptr;
    IWbemServices* services = Connect(&locator);
    if (services != nullptr) {
        BSTR language = SysAllocString(L"WQL");
        BSTR query = SysAllocString(
            L"SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE");
        IEnumWbemClassObject* results = nullptr;
        services->ExecQuery(language, query, WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                            &results);
        SysFreeString(query);
        SysFreeString(language);
        if (results != nullptr) {
            answered = ReadResults(results);
            results->Release();
        }
        services->Release();
    }
    if (locator != nullptr) locator->Release();
    return answered;
}

}  // namespace

int FloorPoll() {
    LoadDxva2Once();
    int answered = ReadPanels();
    EnumDisplayMonitors(nullptr, nullptr, ReadMonitors, reinterpret_cast<LPARAM>(&answered));
    return answered;
}
