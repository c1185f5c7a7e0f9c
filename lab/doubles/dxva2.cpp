// Stands in for dxva2.dll, whose monitor functions Wine does not have. The monitors behind each display
// monitor of Windows are those that the lab's script lists for it (hardware/script.h), the display monitors
// being told apart by the order in which EnumDisplayMonitors visits them.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

#include <windows.h>

#include <highlevelmonitorconfigurationapi.h>
#include <physicalmonitorenumerationapi.h>

#include "hardware/knob.h"
#include "hardware/record.h"
#include "hardware/state.h"

namespace {

// The errors of the real library (winerror.h) for a display that does not answer, for one that has been
// unplugged and for a handle that is none.
constexpr DWORD kNoAnswer = 0xC0262582;
constexpr DWORD kUnplugged = 0xC026258D;
constexpr DWORD kNoSuchHandle = 0xC026258C;
constexpr DWORD kContrastToo = MC_CAPS_CONTRAST;

struct LiveHandle {
    HANDLE handle;
    std::wstring monitor;
};

SRWLOCK g_lock = SRWLOCK_INIT;
std::vector<LiveHandle> g_live;
// Counting on shows a handle that is used after its end. The real library's first handle is 0; so is this
// one's when the script says so.
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

// The place of a display monitor in the enumeration, from 0; -1 when it is none.
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

// The monitors that are plugged in there.
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

// False when the monitor is not plugged in.
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

auto FindLive(HANDLE handle) {
    return std::find_if(g_live.begin(), g_live.end(),
                        [handle](const LiveHandle& live) { return live.handle == handle; });
}

HANDLE HandOut(const Row& monitor) {
    AcquireSRWLockExclusive(&g_lock);
    HANDLE handle = nullptr;
    if (!monitor.Number("zero_handle") || FindLive(nullptr) != g_live.end()) {
        handle = reinterpret_cast<HANDLE>(g_nextHandle++);
    }
    g_live.push_back({handle, monitor.Text("name")});
    ReleaseSRWLockExclusive(&g_lock);
    Count(Counter::kHandles, 1);
    return handle;
}

// Forgets a handle and appends its monitor to `names`; false when there is no such handle.
bool TakeBack(HANDLE handle, std::wstring& names) {
    AcquireSRWLockExclusive(&g_lock);
    const auto live = FindLive(handle);
    const bool known = live != g_live.end();
    if (known) {
        names += (names.empty() ? L"" : L",") + live->monitor;
        g_live.erase(live);
    }
    ReleaseSRWLockExclusive(&g_lock);
    if (known) {
        Count(Counter::kHandles, -1);
    }
    return known;
}

// The beginning that all functions of one monitor have in common: finds it, lets the call take its time and
// returns the error that it then fails with. `step` is its name in the script: capabilities, read or set.
DWORD BeginMonitorCall(HANDLE handle, const char* step, CallRecord& record, Row& monitor) {
    AcquireSRWLockShared(&g_lock);
    const auto live = FindLive(handle);
    const bool known = live != g_live.end();
    const std::wstring name = known ? live->monitor : L"";
    ReleaseSRWLockShared(&g_lock);
    record.SetTarget(name);
    record.Argument(L"handle", static_cast<LONG64>(reinterpret_cast<UINT_PTR>(handle)));
    if (!known) {
        record.Mistake(L"a handle that was not handed out or was destroyed");
        return kNoSuchHandle;
    }
    if (FindMonitor(name, monitor)) {
        Wait(monitor.Number((std::string(step) + "_delay").c_str()));
    }
    // Asked again: what happened while the call waited counts.
    if (!FindMonitor(name, monitor)) {
        return kUnplugged;
    }
    const bool fails =
        (L"," + monitor.Text("fails") + L",")
            .find(L"," + std::wstring(step, step + std::strlen(step)) + L",") != std::wstring::npos;
    return fails ? static_cast<DWORD>(monitor.Number("error", kNoAnswer)) : ERROR_SUCCESS;
}

}  // namespace

extern "C" {

__declspec(dllexport) BOOL WINAPI GetNumberOfPhysicalMonitorsFromHMONITOR(HMONITOR monitor, DWORD* count) {
    const int index = IndexOf(monitor);
    CallRecord record(L"GetNumberOfPhysicalMonitorsFromHMONITOR", DisplayName(index));
    if (index < 0 || !count) {
        record.Mistake(L"no such display monitor, or nowhere to put the count");
        return record.EndWithError(ERROR_INVALID_PARAMETER);
    }
    // Counted before the wait: a list may change between this call and the next.
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
        record.Mistake(L"no such display monitor, or no array");
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
        entry.hPhysicalMonitor = HandOut(present[i]);
        std::memcpy(&entry.szPhysicalMonitorDescription, description.c_str(),
                    description.size() * sizeof(wchar_t));
    }
    return record.EndWithError(ERROR_SUCCESS);
}

__declspec(dllexport) BOOL WINAPI
    GetMonitorCapabilities(HANDLE handle, DWORD* capabilities, DWORD* temperatures) {
    CallRecord record(L"GetMonitorCapabilities", L"");
    Row monitor;
    const DWORD error = BeginMonitorCall(handle, "capabilities", record, monitor);
    if (!capabilities || !temperatures) {
        record.Mistake(L"nowhere to put the answer");
        return record.EndWithError(ERROR_INVALID_PARAMETER);
    }
    if (error == ERROR_SUCCESS) {
        *capabilities = kContrastToo | (monitor.Number("capable") ? MC_CAPS_BRIGHTNESS : 0U);
        *temperatures = MC_SUPPORTED_COLOR_TEMPERATURE_NONE;
        record.Argument(L"capabilities", *capabilities);
    }
    return record.EndWithError(error);
}

__declspec(dllexport) BOOL WINAPI
    GetMonitorBrightness(HANDLE handle, DWORD* minimum, DWORD* current, DWORD* maximum) {
    CallRecord record(L"GetMonitorBrightness", L"");
    Row monitor;
    const DWORD error = BeginMonitorCall(handle, "read", record, monitor);
    if (!minimum || !current || !maximum) {
        record.Mistake(L"nowhere to put the answer");
        return record.EndWithError(ERROR_INVALID_PARAMETER);
    }
    if (error == ERROR_SUCCESS) {
        *minimum = static_cast<DWORD>(monitor.Number("minimum"));
        *current = static_cast<DWORD>(KnobValue(monitor));
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
    const DWORD error = BeginMonitorCall(handle, "set", record, monitor);
    if (error == ERROR_SUCCESS) {
        TurnKnob(monitor, value);
    }
    return record.EndWithError(error);
}

__declspec(dllexport) BOOL WINAPI DestroyPhysicalMonitor(HANDLE handle) {
    std::wstring names;
    const bool known = TakeBack(handle, names);
    CallRecord record(L"DestroyPhysicalMonitor", names);
    if (!known) {
        record.Mistake(L"a handle that was not handed out or was destroyed");
    }
    return record.EndWithError(known ? ERROR_SUCCESS : kNoSuchHandle);
}

__declspec(dllexport) BOOL WINAPI DestroyPhysicalMonitors(DWORD size, PHYSICAL_MONITOR* monitors) {
    CallRecord record(L"DestroyPhysicalMonitors", L"");
    record.Argument(L"size", size);
    std::wstring names;
    bool known = monitors != nullptr;
    for (DWORD i = 0; monitors && i < size; ++i) {
        known = TakeBack(monitors[i].hPhysicalMonitor, names) && known;
    }
    record.SetTarget(names);
    if (!known) {
        record.Mistake(L"a handle that was not handed out or was destroyed");
    }
    return record.EndWithError(known ? ERROR_SUCCESS : kNoSuchHandle);
}

}  // extern "C"
