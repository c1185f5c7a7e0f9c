// Makes every Windows function that the program calls fail in turn, in every way and at every call, during a
// complete session. After each session the screen, the cursors and the monitor must be in their previous
// state.
//
//     fault_matrix [--quick] [--from ROW] [--only FUNCTION]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <set>
#include <string>

#include "app/startup.h"
#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "faults/fault_injector.h"
#include "faults/fault_table.h"
#include "faults/handle_count.h"
#include "faults/script.h"
#include "faults/session.h"
#include "faults/session_log.h"
#include "faults/simulated_platform.h"
#include "filter/gamma_range_helper.h"
#include "filter/gdi_counts.h"

namespace {

constexpr std::size_t kProgress = 500;
constexpr int kWarmUpSessions = 2;  // Windows and Wine load fonts and libraries in the first ones

struct Case {
    const FaultRow* row;  // null: nothing fails
    Occasion occasion;
    End end;
};

std::set<std::string> g_called;
bool g_short = false;

void Describe(const Case& each, std::size_t number) {
    if (each.row == nullptr) {
        std::snprintf(g_currentCase, sizeof(g_currentCase), "no fault, %s", NameOf(each.end));
        return;
    }
    std::snprintf(g_currentCase, sizeof(g_currentCase), "%zu: %s = %lld (error %lu) %s, %s", number,
                  each.row->function, static_cast<long long>(each.row->failure.result),
                  each.row->failure.lastError, NameOf(each.occasion), NameOf(each.end));
}

struct Outcome {
    std::uint32_t calls;
    std::vector<std::string> faults;
};

bool IsAnyOf(const Case& each, std::initializer_list<const char*> functions) {
    if (each.row == nullptr) return false;
    for (const char* function : functions) {
        if (std::strcmp(each.row->function, function) == 0) return true;
    }
    return false;
}

// Whether the platform allows the restoration: a function that fails always cannot restore anything.
bool MayRestore(const Case& each, std::initializer_list<const char*> functions) {
    return each.occasion != Occasion::Always || !IsAnyOf(each, functions);
}

bool IsBrightnessRecorded() {
    wchar_t row[8] = L"";
    GetPrivateProfileStringW(L"Restore", L"1", L"", row, 8, (ProgramFolder() + L"settings.ini").c_str());
    return row[0] != L'\0';
}

void CheckRestored(const Case& each, Outcome* outcome) {
    if (!IsRampIdentity() && MayRestore(each, {"SetDeviceGammaRamp", "GetDC"}))
        outcome->faults.push_back("the gamma ramp is not the identity");
    // Windows ends the process after the end of the session, and the matrix with it.
    if (!g_platform.matrixIsIdentity && each.end != End::EndOfSession &&
        MayRestore(each, {"MagSetFullscreenColorEffect"}))
        outcome->faults.push_back("the colour matrix is not the identity");
    if (g_platform.cursorsReplaced && MayRestore(each, {"SystemParametersInfoW"}))
        outcome->faults.push_back("the cursors are tinted");
    // The brightness of a monitor that refuses it or does not answer is recorded, and the next start restores
    // it.
    const bool recorded =
        IsAnyOf(each, {"SetMonitorBrightness", "GetMonitorBrightness", "GetMonitorCapabilities"}) &&
        IsBrightnessRecorded();
    if (g_platform.monitorPercent != 40 && !recorded &&
        MayRestore(each,
                   {"SetMonitorBrightness", "EnumDisplayMonitors", "GetMonitorInfoW",
                    "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
                    "GetMonitorCapabilities", "GetMonitorBrightness", "LoadLibraryExW", "GetProcAddress"}))
        outcome->faults.push_back("the monitor is at " + std::to_string(g_platform.monitorPercent) + " %");
    if (g_platform.busyLoop) outcome->faults.push_back("busy loop");
}

// A function that fails only sometimes, or that reports success, may have made any line true.
void CheckLog(const Case& each, Outcome* outcome) {
    if (!IsOldLogKept()) outcome->faults.push_back("the old log is lost");
    if (each.row == nullptr || each.occasion != Occasion::Always || each.end == End::Helper) return;
    const bool reportsFailure = each.row->failure.lastError != ERROR_SUCCESS;
    const std::string line = FindUntrueLine(reportsFailure ? each.row->function : "");
    if (!line.empty()) outcome->faults.push_back("not true in the log: " + line);
}

// Whether the program can learn that it should quit.
bool CanQuit(const Case& each) {
    return !IsAnyOf(each, {"CreatePopupMenu", "TrackPopupMenu", "DestroyWindow", "GetMessageW"});
}

std::wstring CommandLine(End end) {
    const std::wstring program = L"ambrel.exe";
    return end == End::Helper ? program + L" " + kExpandGammaRangeSwitch : program;
}

Outcome RunSession(const Case& each, std::size_t number) {
    Describe(each, number);
    PrepareSession(SessionScript(each.end, g_short));
    WriteOldLog();
    Outcome outcome = {};
    {
        std::optional<InjectedFault> fault;
        if (each.row != nullptr) {
            void* lookedUp = each.row->lookedUp ? SimulatedFunction(each.row->function) : nullptr;
            fault.emplace(each.row->function, lookedUp, each.row->failure, each.occasion);
        }
        RunAmbrel(GetModuleHandleW(nullptr), CommandLine(each.end).c_str());
        if (fault) outcome.calls = fault->Calls();
    }
    // What fclose has not closed would keep the log from the next sessions.
    _fcloseall();
    if (g_platform.scriptRanOut && each.end == End::Quit && CanQuit(each))
        outcome.faults.push_back("the program does not quit");
    // If the script could not make the program quit, this does.
    if (each.end == End::Quit && g_app.mainWindow != nullptr) DestroyWindow(g_app.mainWindow);
    CheckRestored(each, &outcome);
    CheckLog(each, &outcome);
    CleanUpSession();
    return outcome;
}

struct Held {
    int gdiObjects;
    int handles;
};

Held CountHeld() {
    return {CountGdiObjects(), CountHandles()};
}

// Functions whose failure leaks the object that they should free.
bool FreesOrEndsTheProcess(const Case& each) {
    return IsAnyOf(each, {"CloseHandle", "RegCloseKey", "fclose", "DeleteObject", "DeleteDC", "ReleaseDC",
                          "DestroyIcon", "DestroyCursor", "SetSystemCursor", "SelectObject", "EndPaint",
                          "UnregisterPowerSettingNotification", "UnregisterSuspendResumeNotification",
                          // The process ends with exit code 1.
                          "RegisterClassExW", "CreateWindowExW"});
}

// A leak grows with each run; Windows and Wine create their cached objects once.
void CheckHeld(const Case& each, std::size_t number, Outcome* outcome, const Held& before) {
    Held first = CountHeld();
    // Windows ends the process after the end of the session, which may still be restoring displays.
    if (each.end == End::EndOfSession) first.handles = before.handles;
    if (first.gdiObjects <= before.gdiObjects && first.handles <= before.handles) return;
    RunSession(each, number);
    const Held second = CountHeld();
    if (first.gdiObjects > before.gdiObjects && second.gdiObjects > first.gdiObjects)
        outcome->faults.push_back(std::to_string(second.gdiObjects - first.gdiObjects) + " GDI objects more");
    if (first.handles > before.handles && second.handles > first.handles)
        outcome->faults.push_back(std::to_string(second.handles - first.handles) + " handles more");
}

bool RunCase(const Case& each, std::size_t number) {
    const Held before = CountHeld();
    Outcome outcome = RunSession(each, number);
    if (!FreesOrEndsTheProcess(each)) CheckHeld(each, number, &outcome, before);
    for (const std::string& fault : outcome.faults)
        std::printf("FAULT: %s: %s\n", g_currentCase, fault.c_str());
    if (each.row != nullptr && outcome.calls != 0) g_called.insert(each.row->function);
    std::fflush(stdout);
    return outcome.faults.empty();
}

std::vector<Case> Cases(const std::vector<FaultRow>& rows, bool quick, const char* only) {
    std::vector<Case> cases;
    for (const FaultRow& row : rows) {
        if (only != nullptr && std::strcmp(row.function, only) != 0) continue;
        for (const Occasion occasion : kOccasions) {
            if (quick && occasion != Occasion::Always) continue;
            cases.push_back({&row, occasion, End::Quit});
            if (quick) continue;
            cases.push_back({&row, occasion, End::EndOfSession});
            cases.push_back({&row, occasion, End::Helper});
        }
    }
    return cases;
}

}  // namespace

int main(int argc, char** argv) {
    bool quick = false;
    std::size_t from = 0;
    const char* only = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) quick = g_short = true;
        if (std::strcmp(argv[i], "--from") == 0 && i + 1 < argc) from = std::strtoul(argv[++i], nullptr, 10);
        if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc) only = argv[++i];
    }
    ReportCrashesAndHangs();
    InstallSimulatedPlatform();
    const std::vector<FaultRow> rows = AllFaults();
    const std::vector<Case> cases = Cases(rows, quick, only);
    std::printf("%zu cases\n", cases.size());
    std::fflush(stdout);
    bool good = true;
    for (int i = 0; i < kWarmUpSessions; ++i) {
        for (const End end : {End::Quit, End::EndOfSession})
            RunSession({nullptr, Occasion::Always, end}, 0);
    }
    for (const End end : {End::Quit, End::EndOfSession})
        good = RunCase({nullptr, Occasion::Always, end}, 0) && good;
    std::size_t failed = 0;
    for (std::size_t number = from; number < cases.size(); ++number) {
        failed += RunCase(cases[number], number) ? 0 : 1;
        if (number % kProgress == kProgress - 1) {
            std::printf("%zu of %zu cases\n", number + 1, cases.size());
            std::fflush(stdout);
        }
    }
    std::set<std::string> functions;
    for (const Case& each : cases)
        functions.insert(each.row->function);
    for (const std::string& function : functions) {
        if (g_called.count(function) == 0) std::printf("not called: %s\n", function.c_str());
    }
    std::printf("%zu functions, %zu rows, %zu cases, %zu failed\n", functions.size(), rows.size(),
                cases.size() - from, failed);
    return good && failed == 0 ? 0 : 1;
}
