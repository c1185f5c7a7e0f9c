// Makes every Windows function that the program calls fail in turn, in every way and at every call, during a
// complete session. After each session the screen, the cursors and the monitor must be in their previous
// state.
//
//     fault_matrix [--quick] [--from CASE] [--to CASE] [--only FUNCTION]
//
// Processes that share the cases run them in parallel; the last case of a process is the one before --to.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <set>
#include <string>

#include "app/startup.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/program_names.h"
#include "brightness/pwm_release.h"
#include "faults/fault_case.h"
#include "faults/fault_injector.h"
#include "faults/fault_table.h"
#include "faults/handle_count.h"
#include "faults/script.h"
#include "faults/session.h"
#include "faults/session_log.h"
#include "faults/simulated_platform.h"
#include "filter/gamma_range_helper.h"
#include "support/gdi_counts.h"

namespace {

constexpr std::size_t kProgress = 500;
constexpr DWORD kReleaseTimeout = 10000;  // ms
constexpr int kWarmUpSessions = 2;

std::set<const FaultRow*> g_failedOnce;  // the rows whose function has failed in a session
std::size_t g_casesWithFailure = 0;

void Describe(const Case& each, std::size_t number) {
    if (each.row == nullptr) {
        std::snprintf(g_currentCase, sizeof(g_currentCase), "no fault, %s", NameOf(each.end));
        return;
    }
    std::snprintf(g_currentCase, sizeof(g_currentCase), "%zu: %s = %lld (error %lu) %s, %s", number,
                  each.row->function, static_cast<long long>(each.row->failure.result),
                  each.row->failure.lastError, NameOf(each.occasion), NameOf(each.end));
}

// Whether the program can learn that it should quit.
bool CanQuit(const Case& each) {
    return !IsAnyOf(each, {"CreatePopupMenu", "TrackPopupMenu", "DestroyWindow", "GetMessageW"});
}

std::wstring CommandLine(End end) {
    const std::wstring program = L"ambrel.exe";
    return end == End::Helper ? program + L" " + kExpandGammaRangeSwitch : program;
}

// The window of the instance that is running.
void CreateFirstInstance() {
    g_platform.isFirstInstance = false;
    WNDCLASSW kind = {};
    kind.lpfnWndProc = DefWindowProcW;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.lpszClassName = kWindowClassName;
    RegisterClassW(&kind);
    CreateWindowExW(0, kWindowClassName, kProgramTitle, 0, 0, 0, 0, 0, nullptr, nullptr, kind.hInstance,
                    nullptr);
}

bool IsFirstInstanceSignalled() {
    MSG message;
    return PeekMessageW(&message, FindWindowW(kWindowClassName, nullptr), kMessageShowPopup,
                        kMessageShowPopup, PM_NOREMOVE) != FALSE;
}

void PreparePlatform(const Case& each) {
    PrepareSession(SessionScript(each.end, each.isShort));
    WriteOldLog();
    g_platform.isComplete = true;
    if (each.end != End::SecondStart) return;
    CreateFirstInstance();
    g_platform.refusesDpiAwareness = true;
}

// Requires that nothing fails.
void CheckSession(const Case& each, Outcome* outcome) {
    if (each.end == End::SecondStart && !IsFirstInstanceSignalled())
        outcome->faults.push_back("the first instance is not signalled");
    if (!WasReassertedAfterPowerLoss()) outcome->faults.push_back("filter or lock are lost without power");
    if (each.isShort || (each.end != End::Quit && each.end != End::EndOfSession)) return;
    if (const int unpressed = CountUnpressedRegions())
        outcome->faults.push_back(std::to_string(unpressed) + " regions are not pressed");
}

// What the end of the process would do.
void EndProcess(const Case& each) {
    // What fclose has not closed would keep the log from the next sessions.
    _fcloseall();
    // The thread that restores the brightness may still be running.
    if (each.end == End::EndOfSession) WaitForPwmSafeRelease(kReleaseTimeout);
    if (each.end == End::SecondStart && g_app.singleInstanceMutex != nullptr)
        CloseHandle(g_app.singleInstanceMutex);
}

Outcome RunSession(const Case& each, std::size_t number) {
    Describe(each, number);
    PreparePlatform(each);
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
    EndProcess(each);
    if (g_platform.scriptRanOut && each.end == End::Quit && CanQuit(each))
        outcome.faults.push_back("the program does not quit");
    // If the script could not make the program quit, this does.
    if (each.end == End::Quit && g_app.mainWindow != nullptr) DestroyWindow(g_app.mainWindow);
    CheckRestored(each, &outcome);
    CheckLog(each, &outcome);
    if (each.row == nullptr) CheckSession(each, &outcome);
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

std::uint32_t CallsUntilFailure(Occasion occasion) {
    return occasion == Occasion::Always || occasion == Occasion::First ? 1 : 2;
}

bool RunCase(const Case& each, std::size_t number) {
    const Held before = CountHeld();
    Outcome outcome = RunSession(each, number);
    if (!FreesOrEndsTheProcess(each)) CheckHeld(each, number, &outcome, before);
    for (const std::string& fault : outcome.faults)
        std::printf("FAULT: %s: %s\n", g_currentCase, fault.c_str());
    if (each.row != nullptr && outcome.calls >= CallsUntilFailure(each.occasion)) {
        g_failedOnce.insert(each.row);
        g_casesWithFailure += 1;
    }
    std::fflush(stdout);
    return outcome.faults.empty();
}

void AppendCases(const FaultRow* row, bool quick, std::vector<Case>* cases) {
    if (row->notReached != nullptr) {
        cases->push_back({row, Occasion::Always, End::Quit, false});
        return;
    }
    if (quick) {
        for (const End end : {End::Quit, End::SecondStart, End::EndOfSession, End::Helper})
            cases->push_back({row, Occasion::Always, end, true});
        cases->push_back({row, Occasion::Always, End::Quit, false});
        return;
    }
    for (const Occasion occasion : kOccasions) {
        for (const End end : {End::Quit, End::EndOfSession, End::SecondStart, End::Helper})
            cases->push_back({row, occasion, end, false});
    }
}

std::vector<Case> Cases(const std::vector<FaultRow>& rows, bool quick, const char* only) {
    std::vector<Case> cases;
    for (const FaultRow& row : rows) {
        if (only == nullptr || std::strcmp(row.function, only) == 0) AppendCases(&row, quick, &cases);
    }
    return cases;
}

// Without a fault. Windows and Wine load fonts and libraries in the first sessions.
bool RunWithoutFault(bool quick) {
    const End ends[] = {End::Quit, End::EndOfSession, End::SecondStart, End::Helper};
    for (int i = 0; i < kWarmUpSessions; ++i) {
        for (const End end : ends)
            RunSession({nullptr, Occasion::Always, end, quick && i != 0}, 0);
    }
    bool good = true;
    for (const End end : ends)
        good = RunCase({nullptr, Occasion::Always, end, quick && end != End::Quit}, 0) && good;
    return good;
}

struct Range {
    std::size_t first;
    std::size_t end;
};

// False if the function of a row has failed in no session, or in one although the table says why it cannot.
// Rows with cases outside the range are not checked.
bool IsReachAsExpected(const std::vector<Case>& cases, const Range& range) {
    std::set<const FaultRow*> skipped;
    std::set<const FaultRow*> checked;
    for (std::size_t i = 0; i < cases.size(); ++i)
        (i < range.first || i >= range.end ? skipped : checked).insert(cases[i].row);
    bool good = true;
    for (const FaultRow* row : checked) {
        if (skipped.count(row) != 0) continue;
        const bool reached = g_failedOnce.count(row) != 0;
        const bool isExpected = reached == (row->notReached == nullptr);
        if (row->notReached != nullptr && isExpected)
            std::printf("not reached: %s: %s\n", row->function, row->notReached);
        if (isExpected) continue;
        std::printf("FAULT: %s session calls %s (= %lld)\n", reached ? "a" : "no", row->function,
                    static_cast<long long>(row->failure.result));
        good = false;
    }
    return good;
}

void PrintSize(const std::vector<Case>& cases, const Range& range, std::size_t run, std::size_t failed) {
    std::set<std::string> functions;
    std::set<std::string> failing;
    std::set<const FaultRow*> rows;
    for (std::size_t i = range.first; i < range.end; ++i) {
        functions.insert(cases[i].row->function);
        rows.insert(cases[i].row);
    }
    for (const FaultRow* row : g_failedOnce)
        failing.insert(row->function);
    std::printf("%zu functions, %zu reached; %zu rows, %zu reached; %zu cases, the function failed in %zu; ",
                functions.size(), failing.size(), rows.size(), g_failedOnce.size(), run, g_casesWithFailure);
    std::printf("%zu cases with faults\n", failed);
}

struct Options {
    bool quick = false;
    Range range = {0, static_cast<std::size_t>(-1)};
    const char* only = nullptr;
};

Options ReadOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(argv[i], "--quick") == 0) options.quick = true;
        if (std::strcmp(argv[i], "--from") == 0 && hasValue)
            options.range.first = std::strtoul(argv[++i], nullptr, 10);
        if (std::strcmp(argv[i], "--to") == 0 && hasValue)
            options.range.end = std::strtoul(argv[++i], nullptr, 10);
        if (std::strcmp(argv[i], "--only") == 0 && hasValue) options.only = argv[++i];
    }
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = ReadOptions(argc, argv);
    ReportCrashesAndHangs();
    InstallSimulatedPlatform();
    InstallCursorWithoutMask();
    const std::vector<FaultRow> rows = AllFaults();
    const std::vector<Case> cases = Cases(rows, options.quick, options.only);
    const Range range = {options.range.first, std::min(options.range.end, cases.size())};
    std::printf("%zu cases\n", cases.size());
    std::fflush(stdout);
    bool good = RunWithoutFault(options.quick);
    std::size_t run = 0;
    std::size_t failed = 0;
    for (std::size_t number = range.first; number < range.end; ++number) {
        // In the short form a function fails in the first kind of session that calls it.
        if (options.quick && g_failedOnce.count(cases[number].row) != 0) continue;
        run += 1;
        failed += RunCase(cases[number], number) ? 0 : 1;
        if (number % kProgress == kProgress - 1) {
            std::printf("%zu of %zu cases\n", number + 1, cases.size());
            std::fflush(stdout);
        }
    }
    good = IsReachAsExpected(cases, range) && good;
    PrintSize(cases, range, run, failed);
    return good && failed == 0 ? 0 : 1;
}
