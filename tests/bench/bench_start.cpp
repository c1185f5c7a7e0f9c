// Starts the program and its floor alternately: bench_start PROGRAM FLOOR. The time is that from
// CreateProcess until the process waits for messages.
#include "measure.h"

namespace {

constexpr DWORD kLimit = 30000;  // ms
constexpr DWORD kPause = 300;    // ms; the shell removes the icon of the ended process

double StartTime(const wchar_t* program) {
    wchar_t command[MAX_PATH];
    lstrcpynW(command, program, MAX_PATH);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    const double start = Microseconds();
    if (!CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        std::exit(1);
    if (WaitForInputIdle(process.hProcess, kLimit) != 0) std::exit(1);
    const double time = Microseconds() - start;
    TerminateProcess(process.hProcess, 0);
    WaitForSingleObject(process.hProcess, kLimit);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    Sleep(kPause);
    return time;
}

}  // namespace

int wmain(int count, wchar_t** words) {
    if (count != 3) return 2;
    StartTime(words[1]);
    StartTime(words[2]);
    std::vector<double> times, floors, ratios;
    for (int round = 0; round < Rounds(); ++round) {
        floors.push_back(StartTime(words[2]));
        times.push_back(StartTime(words[1]));
        ratios.push_back(times.back() / floors.back());
    }
    const Summary ratio = Summarise(ratios);
    PrintFigure({"process start to message loop", 1.15}, Summarise(times).median, Summarise(floors).median,
                ratio.median, ratio.spread);
    return 0;
}
