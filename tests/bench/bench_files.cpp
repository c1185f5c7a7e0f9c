// A line of the event log, a save of the settings, and the support report with a full ring and a log of 256
// KB; bench_files profile also prints where the report's time goes.
#include <string>

#include "app/state/app_state.h"
#include "diag/support_bundle.h"
#include "diag/support_facts.h"
#include "diag/support_text.h"
#include "floor_files.h"
#include "floor_report.h"
#include "measure.h"
#include "store/event_log.h"
#include "store/settings.h"

namespace {

constexpr char kLine[] = "[21:04:07.031] PWM-safe: 1 display(s) confirmed locked at 100%\r\n";
constexpr DWORD kLineBytes = sizeof(kLine) - 1;
constexpr int kLinesOf256Kb = 262144 / static_cast<int>(kLineBytes);

std::wstring g_folder;
std::wstring g_floorLog;
std::wstring g_floorSettings;
std::wstring g_log;

void FillLog(const std::wstring& path) {
    HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    for (int i = 0; i < kLinesOf256Kb; ++i)
        WriteFile(file, kLine, kLineBytes, &written, nullptr);
    CloseHandle(file);
}

// Both logs stay far below the size at which one is cut.
void EmptyLogs() {
    for (const std::wstring* path : {&g_log, &g_floorLog})
        CloseHandle(
            CreateFileW(path->c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr));
}

void MeasureLogLine() {
    Compare(
        {"one log line", 1.20}, [](int) { LogEvent("PWM-safe: %d display(s) confirmed locked at 100%%", 1); },
        [](int) { FloorAppend(g_floorLog.c_str(), kLine, kLineBytes); }, EmptyLogs);
}

// The save logs a line.
void MeasureSave() {
    Compare(
        {"one save of the settings", 1.20}, [](int) { SaveSettings(); },
        [](int) {
            FloorWriteSettings(g_floorSettings.c_str());
            FloorAppend(g_floorLog.c_str(), kLine, kLineBytes);
        },
        EmptyLogs);
}

// The median times of the report's parts on standard error, measured in turn. The facts contain both logs.
void ProfileReport() {
    constexpr int kReports = 201;
    const SupportFacts facts = ReadSupportFacts();
    std::vector<double> floor, floorTail, tail, lines, reads, texts, reports;
    for (int i = 0; i < kReports; ++i) {
        floor.push_back(TimeOf([](int) { FloorReport(g_log.c_str()); }, 1, nullptr));
        floorTail.push_back(TimeOf([](int) { FloorReadTail(g_log.c_str()); }, 1, nullptr));
        lines.push_back(TimeOf([](int) { static_cast<void>(ReadLogRing()); }, 1, nullptr));
        tail.push_back(TimeOf([](int) { static_cast<void>(ReadLogTail()); }, 1, nullptr));
        reads.push_back(TimeOf([](int) { static_cast<void>(ReadSupportFacts()); }, 1, nullptr));
        texts.push_back(
            TimeOf([&facts](int) { static_cast<void>(SupportBundleText(g_app, facts)); }, 1, nullptr));
        reports.push_back(TimeOf([](int) { static_cast<void>(BuildSupportBundle()); }, 1, nullptr));
    }
    std::fprintf(stderr, "report: %.0f us; its floor: %.0f us, of it the end of the log: %.0f us\n",
                 Median(reports), Median(floor), Median(floorTail));
    std::fprintf(stderr, "facts: %.0f us, of them lines in memory: %.0f us, end of the log: %.0f us\n",
                 Median(reads), Median(lines), Median(tail));
    std::fprintf(stderr, "text: %.0f us\n", Median(texts));
}

void MeasureReport() {
    for (int i = 0; i < 500; ++i)
        LogEvent("PWM-safe: %d display(s) confirmed locked at 100%%", i);
    FillLog(g_log);
    Compare(
        {"one support report, 500 lines in memory, log file of 256 KB", 1.20},
        [](int) { static_cast<void>(BuildSupportBundle()); }, [](int) { FloorReport(g_log.c_str()); });
}

}  // namespace

int main(int count, char** words) {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    g_folder = std::wstring(folder) + L"AmbrelBench\\";
    CreateDirectoryW(g_folder.c_str(), nullptr);
    g_log = g_folder + L"events.log";
    g_floorLog = g_folder + L"floor.log";
    g_floorSettings = g_folder + L"floor.ini";
    g_app.instance = GetModuleHandleW(nullptr);
    g_app.settingsPath = g_folder + L"settings.ini";
    OpenEventLogFile(g_log);
    MeasureLogLine();
    MeasureSave();
    MeasureReport();
    if (count > 1 && std::string(words[1]) == "profile") ProfileReport();
    return 0;
}
