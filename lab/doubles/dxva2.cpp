// Double of dxva2.dll, whose monitor functions Wine lacks. The lab's script (hardware/script.h) lists the
// physical monitors of each display monitor. A display monitor is identified by its position in the order of
// EnumDisplayMonitors.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

#include <windows.h>

#include <highlevelmonitorconfigurationapi.h>
#include <physicalmonitorenumerationapi.h>

#include "hardware/brightness.h"
#include "hardware/record.h"
#include "hardware/state.h"

namespace {

// Errors of the real library (winerror.h): a display that does not answer, one that has been unplugged, and
// an invalid handle.
constexpr DWORD kNoResponse = 0xC0262582;
constexpr DWORD kUnplugged = 0xC026258D;
constexpr DWORD kInvalidHandle = 0xC026258C;
constexpr DWORD kOtherCapabilities = MC_CAPS_CONTRAST;

struct OpenedHandle {
    HANDLE handle;
    std::wstring monitor;
};

SRWLOCK g_lock = SRWLOCK_INIT;
std::vector<OpenedHandle> g_openHandles;
// A handle is not reused, so that its use after DestroyPhysicalMonitors is detected. The real library's first
// handle is 0; here the script decides (zero_handle).
UINT_PTR g_nextHandle = 1;

struct Search {
    HMONITOR wanted;
    int visited;
    int found;
};

BOOL CALLBACK VisitMonitor(HMONITOR monitor, HDC, LPRECT, LPARAM context) {
    Search* const search = reinterpret_cast<Search*>(context);
    if (monitor == search->wanted) {
        search->found = search->visited;
    }
    ++search->visited;
    return TRUE;
}

// The position of a display monitor in the enumeration, from 0; -1 if there is no such display monitor.
int IndexOf(HMONITOR monitor) {
    Search search = {monitor, 0, -1};
    EnumDisplayMonitors(nullptr, nullptr, VisitMonitor, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::wstring DisplayName(int index) {
    return L"display" + std::to_wstring(index);
}

Row DisplayRow(int index) {
    const auto script = ReadScript();
    for (const Row& row : *script) {
        if (row.kind == "display" && row.Number("index") == index) {
            return row;
        }
    }
    return {};
}

// The monitors that are connected to the display monitor.
Rows MonitorRows(int index) {
    Rows found;
    const auto script = ReadScript();
    for (const Row& row : *script) {
        if (row.kind == "monitor" && row.Number("display") == index && row.Number("present")) {
            found.push_back(row);
        }
    }
    return found;
}

// False if the monitor is not connected.
bool FindMonitor(const std::wstring& name, Row& found) {
    const auto script = ReadScript();
    for (const Row& row : *script) {
        if (row.kind == "monitor" && row.Text("name") == name && row.Number("present")) {
            found = row;
            return true;
        }
    }
    return false;
}

auto FindOpenHandle(HANDLE handle) {
    return std::find_if(g_openHandles.begin(), g_openHandles.end(),
                        [handle](const OpenedHandle& open) { return open.handle == handle; });
}

HANDLE OpenHandle(const Row& monitor) {
    AcquireSRWLockExclusive(&g_lock);
    HANDLE handle = nullptr;
    if (!monitor.Number("zero_handle") || FindOpenHandle(nullptr) != g_openHandles.end()) {
        handle = reinterpret_cast<HANDLE>(g_nextHandle++);
    }
    g_openHandles.push_back({handle, monitor.Text("name")});
    ReleaseSRWLockExclusive(&g_lock);
    Count(Counter::kHandles, 1);
    return handle;
}

// Releases a handle and appends its monitor to `names`. False if the handle is not open.
bool ReleaseHandle(HANDLE handle, std::wstring& names) {
    AcquireSRWLockExclusive(&g_lock);
    const auto open = FindOpenHandle(handle);
    const bool known = open != g_openHandles.end();
    if (known) {
        names += (names.empty() ? L"" : L",") + open->monitor;
        g_openHandles.erase(open);
    }
    ReleaseSRWLockExclusive(&g_lock);
    if (known) {
        Count(Counter::kHandles, -1);
    }
    return known;
}

// The common start of the functions on one monitor: finds the monitor, waits for the call's delay and returns
// the error of the call. `call` is its name in the script: capabilities, read or set.
DWORD StartMonitorCall(HANDLE handle, const char* call, CallRecord& record, Row& monitor) {
    AcquireSRWLockShared(&g_lock);
    const auto open = FindOpenHandle(handle);
    const bool known = open != g_openHandles.end();
    const std::wstring name = known ? open->monitor : L"";
    ReleaseSRWLockShared(&g_lock);
    record.SetTarget(name);
    record.Argument(L"handle", static_cast<LONG64>(reinterpret_cast<UINT_PTR>(handle)));
    if (!known) {
        record.MarkInvalid(L"a handle that was not handed out or was destroyed");
        return kInvalidHandle;
    }
    if (FindMonitor(name, monitor)) {
        Wait(monitor.Number((std::string(call) + "_delay").c_str()));
    }
    // Read again: the script may have changed during the wait.
    if (!FindMonitor(name, monitor)) {
        return kUnplugged;
    }
    const bool fails =
        (L"," + monitor.Text("fails") + L",")
            .find(L"," + std::wstring(call, call + std::strlen(call)) + L",") != std::wstring::npos;
    return fails ? static_cast<DWORD>(monitor.Number("error", kNoResponse)) : ERROR_SUCCESS;
}

}  // namespace

extern "C" {

__declspec(dllexport) BOOL WINAPI GetNumberOfPhysicalMonitorsFromHMONITOR(HMONITOR monitor, DWORD* count) {
    const int index = IndexOf(monitor);
    CallRecord record(L"GetNumberOfPhysicalMonitorsFromHMONITOR", DisplayName(index));
    if (index < 0 || !count) {
        record.MarkInvalid(L"no such display monitor, or no pointer for the count");
        return record.EndWithError(ERROR_INVALID_PARAMETER);
    }
    // Counted before the wait, so that a test can change the list between this call and the next.
    const Row display = DisplayRow(index);
    const DWORD present = static_cast<DWORD>(MonitorRows(index).size());
    Wait(display.Number("delay"));
    const DWORD error = static_cast<DWORD>(display.Number("count_error"));
    if (error == ERROR_SUCCESS) {
        *count = static_cast<DWORD>(display.Number("count", present));
        record.Argument(L"count", *count);
    }
    return record.EndWithError(error);
}

__declspec(dllexport) BOOL WINAPI
    GetPhysicalMonitorsFromHMONITOR(HMONITOR monitor, DWORD size, PHYSICAL_MONITOR* monitors) {
    const int index = IndexOf(monitor);
    CallRecord record(L"GetPhysicalMonitorsFromHMONITOR", DisplayName(index));
    record.Argument(L"size", size);
    if (index < 0 || !monitors || size == 0) {
        record.MarkInvalid(L"no such display monitor, or no array");
        return record.EndWithError(ERROR_INVALID_PARAMETER);
    }
    const Row display = DisplayRow(index);
    Wait(display.Number("delay"));
    const DWORD error = static_cast<DWORD>(display.Number("fetch_error"));
    if (error != ERROR_SUCCESS) {
        return record.EndWithError(error);
    }
    const Rows present = MonitorRows(index);
    if (present.size() != size) {
        return record.EndWithError(ERROR_INVALID_PARAMETER);
    }
    for (size_t i = 0; i < present.size(); ++i) {
        PHYSICAL_MONITOR& entry = monitors[i];
        const std::wstring description =
            present[i].Text("description").substr(0, PHYSICAL_MONITOR_DESCRIPTION_SIZE - 1);
        entry = {};
        entry.hPhysicalMonitor = OpenHandle(present[i]);
        std::memcpy(&entry.szPhysicalMonitorDescription, description.c_str(),
                    description.size() * sizeof(wchar_t));
    }
    return record.EndWithError(ERROR_SUCCESS);
}

__declspec(dllexport) BOOL WINAPI
    GetMonitorCapabilities(HANDLE handle, DWORD* capabilities, DWORD* temperatures) {
    CallRecord record(L"GetMonitorCapabilities", L"");
    Row monitor;
    const DWORD error = StartMonitorCall(handle, "capabilities", record, monitor);
    if (!capabilities || !temperatures) {
        record.MarkInvalid(L"no pointer for the result");
        return record.EndWithError(ERROR_INVALID_PARAMETER);
    }
    if (error == ERROR_SUCCESS) {
        *capabilities = kOtherCapabilities | (monitor.Number("capable") ? MC_CAPS_BRIGHTNESS : 0U);
        *temperatures = MC_SUPPORTED_COLOR_TEMPERATURE_NONE;
        record.Argument(L"capabilities", *capabilities);
    }
    return record.EndWithError(error);
}

__declspec(dllexport) BOOL WINAPI
    GetMonitorBrightness(HANDLE handle, DWORD* minimum, DWORD* current, DWORD* maximum) {
    CallRecord record(L"GetMonitorBrightness", L"");
    Row monitor;
    const DWORD error = StartMonitorCall(handle, "read", record, monitor);
    if (!minimum || !current || !maximum) {
        record.MarkInvalid(L"no pointer for the result");
        return record.EndWithError(ERROR_INVALID_PARAMETER);
    }
    if (error == ERROR_SUCCESS) {
        *minimum = static_cast<DWORD>(monitor.Number("minimum"));
        *current = static_cast<DWORD>(DisplayedBrightness(monitor));
        *maximum = static_cast<DWORD>(monitor.Number("maximum"));
        record.Argument(L"minimum", *minimum);
        record.Argument(L"current", *current);
        record.Argument(L"maximum", *maximum);
    }
    return record.EndWithError(error);
}

__declspec(dllexport) BOOL WINAPI SetMonitorBrightness(HANDLE handle, DWORD value) {
    CallRecord record(L"SetMonitorBrightness", L"");
    record.Argument(L"value", value);
    Row monitor;
    const DWORD error = StartMonitorCall(handle, "set", record, monitor);
    if (error == ERROR_SUCCESS) {
        SetDisplayedBrightness(monitor, value);
    }
    return record.EndWithError(error);
}

__declspec(dllexport) BOOL WINAPI DestroyPhysicalMonitor(HANDLE handle) {
    std::wstring names;
    const bool known = ReleaseHandle(handle, names);
    CallRecord record(L"DestroyPhysicalMonitor", names);
    if (!known) {
        record.MarkInvalid(L"a handle that was not handed out or was destroyed");
    }
    return record.EndWithError(known ? ERROR_SUCCESS : kInvalidHandle);
}

__declspec(dllexport) BOOL WINAPI DestroyPhysicalMonitors(DWORD size, PHYSICAL_MONITOR* monitors) {
    CallRecord record(L"DestroyPhysicalMonitors", L"");
    record.Argument(L"size", size);
    std::wstring names;
    bool known = monitors != nullptr;
    for (DWORD i = 0; monitors && i < size; ++i) {
        known = ReleaseHandle(monitors[i].hPhysicalMonitor, names) && known;
    }
    record.SetTarget(names);
    if (!known) {
        record.MarkInvalid(L"a handle that was not handed out or was destroyed");
    }
    return record.EndWithError(known ? ERROR_SUCCESS : kInvalidHandle);
}

}  // extern "C"
