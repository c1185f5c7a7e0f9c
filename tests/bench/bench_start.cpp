// Starts the program and its floor alternately: bench_start PROGRAM CLASS FLOOR CLASS. The time is that from
// CreateProcess until the process waits for messages and its icon is shown.
#include "measure.h"

namespace {

constexpr DWORD kLimit = 30000;  // ms
constexpr DWORD kPause = 300;    // ms; the shell removes the icon of the ended process
constexpr UINT kIconId = 1;

[[noreturn]] void Fail(const wchar_t* program, const char* what) {
    std::fprintf(stderr, "%ls %s\n", program, what);
    std::exit(1);
}

// A change of nothing succeeds if the icon exists.
bool HasIcon(const wchar_t* windowClass) {
    NOTIFYICONDATAW data = {};
    data.cbSize = sizeof(data);
    data.hWnd = FindWindowW(windowClass, nullptr);
    data.uID = kIconId;
    return data.hWnd != nullptr && Shell_NotifyIconW(NIM_MODIFY, &data) != FALSE;
}

// COM waits for messages too while it connects to WMI, so the wait for input may end before the icon exists.
void WaitUntilStarted(HANDLE process, const wchar_t* program, const wchar_t* windowClass) {
    const ULONGLONG deadline = GetTickCount64() + kLimit;
    if (WaitForInputIdle(process, kLimit) != 0) Fail(program, "does not wait for messages");
    while (!HasIcon(windowClass)) {
        if (GetTickCount64() > deadline) Fail(program, "shows no icon");
        Sleep(1);
    }
}

double StartTime(const wchar_t* program, const wchar_t* windowClass) {
    wchar_t command[MAX_PATH];
    lstrcpynW(command, program, MAX_PATH);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    const double start = Microseconds();
    if (!CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        Fail(program, "does not start");
    WaitUntilStarted(process.hProcess, program, windowClass);
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
    if (count != 5) return 2;
    const auto time = [words] { return StartTime(words[1], words[2]); };
    const auto floorTime = [words] { return StartTime(words[3], words[4]); };
    time();
    floorTime();
    CompareTimes({"process start to message loop", 1.15}, time, floorTime);
    return 0;
}
