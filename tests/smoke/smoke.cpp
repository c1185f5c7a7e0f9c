// Starts the program, checks its window and its tray icon, ends it as an installer does, and reports each
// result:
//     smoke PROGRAM
// Exit code 0 if every check passed. It runs on Windows and in the lab.
#include <windows.h>

#include <shellapi.h>

#include <cstdio>

namespace {

constexpr wchar_t kWindowClass[] = L"Ambrel2Class";
constexpr wchar_t kWindowTitle[] = L"Ambrel";
constexpr UINT kTrayIcon = 1;
constexpr DWORD kStartTimeout = 30000;    // ms, also for the tray icon
constexpr DWORD kMessageTimeout = 30000;  // ms
constexpr DWORD kStayTime = 1000;         // ms that the program must keep running after WM_CLOSE
constexpr DWORD kPause = 50;              // ms

bool Report(bool good, const char* what) {
    std::printf("%s: %s\n", good ? "ok" : "FAILED", what);
    std::fflush(stdout);
    return good;
}

HWND FindProgramWindow(DWORD process) {
    const HWND window = FindWindowW(kWindowClass, kWindowTitle);
    DWORD owner = 0;
    if (window == nullptr || GetWindowThreadProcessId(window, &owner) == 0 || owner != process) {
        return nullptr;
    }
    return window;
}

// Null if no window appears in time, or if the program ends first.
HWND WaitForProgramWindow(const PROCESS_INFORMATION& program) {
    for (DWORD waited = 0; waited < kStartTimeout; waited += kPause) {
        const HWND window = FindProgramWindow(program.dwProcessId);
        if (window != nullptr) return window;
        if (WaitForSingleObject(program.hProcess, kPause) == WAIT_OBJECT_0) break;
    }
    return nullptr;
}

// Finds the tray icon by the window that owns it. Wine does not implement the query.
bool CheckTrayIcon(HWND window) {
    NOTIFYICONIDENTIFIER icon = {};
    icon.cbSize = sizeof(icon);
    icon.hWnd = window;
    icon.uID = kTrayIcon;
    RECT rect = {};
    HRESULT result = E_FAIL;
    for (DWORD waited = 0; waited < kStartTimeout; waited += kPause) {
        result = Shell_NotifyIconGetRect(&icon, &rect);
        if (result == S_OK || result == E_NOTIMPL) break;
        Sleep(kPause);
    }
    if (result == E_NOTIMPL) {
        std::printf("skipped: this system cannot report the tray icon\n");
        return true;
    }
    return Report(result == S_OK && rect.right > rect.left, "the tray icon is shown");
}

bool Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam, DWORD_PTR* answer) {
    return SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kMessageTimeout, answer) != 0;
}

bool CheckClose(HWND window, HANDLE process) {
    DWORD_PTR answer = 0;
    const bool sent = Send(window, WM_CLOSE, 0, 0, &answer);
    return Report(sent && WaitForSingleObject(process, kStayTime) == WAIT_TIMEOUT,
                  "WM_CLOSE only hides the popup");
}

bool CheckEnd(HWND window, HANDLE process) {
    DWORD_PTR answer = 0;
    if (!Report(Send(window, WM_QUERYENDSESSION, 0, ENDSESSION_CLOSEAPP, &answer) && answer != 0,
                "the program agrees to end for an installer")) {
        return false;
    }
    Send(window, WM_ENDSESSION, TRUE, ENDSESSION_CLOSEAPP, &answer);
    if (!Report(WaitForSingleObject(process, kMessageTimeout) == WAIT_OBJECT_0, "the program ends")) {
        return false;
    }
    DWORD code = 1;
    GetExitCodeProcess(process, &code);
    return Report(code == 0, "its exit code is 0");
}

}  // namespace

int wmain(int count, wchar_t** words) {
    if (count != 2) {
        std::fprintf(stderr, "smoke PROGRAM\n");
        return 2;
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION program = {};
    if (!Report(CreateProcessW(words[1], nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                               &program) != 0,
                "the program starts")) {
        return 1;
    }
    const HWND window = WaitForProgramWindow(program);
    const bool good = Report(window != nullptr, "its window is there") && CheckTrayIcon(window) &&
                      CheckClose(window, program.hProcess) && CheckEnd(window, program.hProcess);
    if (!good) TerminateProcess(program.hProcess, 1);
    CloseHandle(program.hThread);
    CloseHandle(program.hProcess);
    return good ? 0 : 1;
}
