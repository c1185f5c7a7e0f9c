#include "app/single_instance.h"

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/program_names.h"

bool ClaimSingleInstance() {
    g_app.singleInstanceMutex = CreateMutexW(nullptr, TRUE, kSingleInstanceName);
    const DWORD error = GetLastError();
    if (g_app.singleInstanceMutex != nullptr) return error != ERROR_ALREADY_EXISTS;
    // Another user's mutex cannot be opened, but it is held. No other failure keeps the program from
    // starting.
    return error != ERROR_ACCESS_DENIED;
}

void SignalFirstInstance() {
    HWND window = FindWindowW(kWindowClassName, kProgramTitle);
    if (window == nullptr) return;
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    AllowSetForegroundWindow(process != 0 ? process : ASFW_ANY);
    PostMessageW(window, kMessageShowPopup, 0, 0);
}

void ReleaseSingleInstance() {
    if (g_app.singleInstanceMutex == nullptr) return;
    ReleaseMutex(g_app.singleInstanceMutex);
    CloseHandle(g_app.singleInstanceMutex);
    g_app.singleInstanceMutex = nullptr;
}
