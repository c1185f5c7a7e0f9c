#include "faults/fault_case.h"

#include <cstring>
#include <cwchar>

#include "faults/session.h"
#include "faults/session_log.h"
#include "faults/simulated_panel.h"
#include "faults/simulated_platform.h"

namespace {

// Whether the platform allows the restoration: a function that fails always cannot restore anything.
bool MayRestore(const Case& each, std::initializer_list<const char*> functions) {
    return each.occasion != Occasion::Always || !IsAnyOf(each, functions);
}

std::wstring SettingsPath() {
    return ProgramFolder() + L"settings.ini";
}

// Whether the restore record has a row with the name, which the next start restores.
bool IsRecorded(const wchar_t* name) {
    const std::wstring path = SettingsPath();
    for (const wchar_t* number : {L"1", L"2"}) {
        wchar_t row[512] = L"";
        GetPrivateProfileStringW(L"Restore", number, L"", row, 512, path.c_str());
        if (std::wcsstr(row, name) != nullptr) return true;
    }
    return false;
}

// With two displays the ramps are reset in the displays' own contexts. Without these, or if the enumeration
// ends early, the next start does it.
void CheckRamp(const Case& each, Outcome* outcome) {
    if (IsRampIdentity()) return;
    const bool isRecorded = GetPrivateProfileIntW(L"Restore", L"Ramp", 0, SettingsPath().c_str()) != 0;
    const bool mayRestore = MayRestore(each, {"CreateDCW"}) && !IsAnyOf(each, {"EnumDisplayDevicesW"});
    if (mayRestore || !isRecorded) outcome->faults.push_back("the gamma ramp is not the identity");
}

// GetMonitorBrightness that succeeds without values reads as 100 percent, as a monitor without a range does.
// The monitor then keeps the lock's value.
bool ReadsAs100(const Case& each) {
    return each.occasion == Occasion::EveryOther && IsAnyOf(each, {"GetMonitorBrightness"}) &&
           each.row->failure.result != FALSE;
}

// A display that refuses its brightness or does not answer may stay locked if its value is recorded.
void CheckBrightness(const Case& each, Outcome* outcome) {
    const bool isMonitorRecorded =
        IsAnyOf(each, {"SetMonitorBrightness", "GetMonitorBrightness", "GetMonitorCapabilities"}) &&
        IsRecorded(L"DXVA2:");
    const bool isAsBefore =
        g_platform.monitorPercent == 40 || (g_platform.monitorPercent == 100 && ReadsAs100(each));
    if (!isAsBefore && !isMonitorRecorded &&
        MayRestore(each,
                   {"SetMonitorBrightness", "EnumDisplayMonitors", "GetMonitorInfoW",
                    "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
                    "GetMonitorCapabilities", "GetMonitorBrightness", "LoadLibraryExW", "GetProcAddress"}))
        outcome->faults.push_back("the monitor is at " + std::to_string(g_platform.monitorPercent) + " %");
    const bool isPanelRecorded =
        IsAnyOf(each, {"CoCreateInstance", "CoSetProxyBlanket", "SysAllocString"}) && IsRecorded(kPanelName);
    if (g_platform.panelPercent != 60 && !isPanelRecorded)
        outcome->faults.push_back("the panel is at " + std::to_string(g_platform.panelPercent) + " %");
}

}  // namespace

bool IsAnyOf(const Case& each, std::initializer_list<const char*> functions) {
    if (each.row == nullptr) return false;
    for (const char* function : functions) {
        if (std::strcmp(each.row->function, function) == 0) return true;
    }
    return false;
}

void CheckRestored(const Case& each, Outcome* outcome) {
    CheckRamp(each, outcome);
    // Windows ends the process after the end of the session, and the matrix with it.
    if (!g_platform.matrixIsIdentity && each.end != End::EndOfSession &&
        MayRestore(each, {"MagSetFullscreenColorEffect"}))
        outcome->faults.push_back("the colour matrix is not the identity");
    if (g_platform.cursorsReplaced && MayRestore(each, {"SystemParametersInfoW"}))
        outcome->faults.push_back("the cursors are tinted");
    CheckBrightness(each, outcome);
    if (UnreleasedWmiObjects() != 0)
        outcome->faults.push_back(std::to_string(UnreleasedWmiObjects()) + " objects of WMI are left");
    if (g_platform.busyLoop) outcome->faults.push_back("busy loop");
}

// A function that fails only sometimes, or that reports success, may have made any line true.
void CheckLog(const Case& each, Outcome* outcome) {
    if (!IsOldLogKept()) outcome->faults.push_back("the old log is lost");
    const bool hasLog = each.end == End::Quit || each.end == End::EndOfSession;
    if (each.row == nullptr || each.occasion != Occasion::Always || !hasLog) return;
    const bool reportsFailure = each.row->failure.lastError != ERROR_SUCCESS;
    const std::string line = FindUntrueLine(reportsFailure ? each.row->function : "");
    if (!line.empty()) outcome->faults.push_back("not true in the log: " + line);
}
