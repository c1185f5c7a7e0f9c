#include "faults/session.h"

#include <shlobj.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "brightness/monitor_functions.h"
#include "faults/simulated_platform.h"

char g_currentCase[256] = "";

namespace {

constexpr DWORD kHang = 90000;  // ms, more than any session takes on a busy machine

volatile LONG g_progress = 0;

[[noreturn]] void Abort(const char* what) {
    std::printf("%s: %s\n", what, g_currentCase);
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 3);
    std::_Exit(3);
}

LONG WINAPI OnCrash(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    auto* address = static_cast<char*>(record.ExceptionAddress);
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(address), &module);
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(module, path, MAX_PATH);
    std::printf("code %08lX at %ls + %llX\n", record.ExceptionCode, module != nullptr ? path : L"?",
                static_cast<unsigned long long>(address - reinterpret_cast<char*>(module)));
    Abort("CRASH");
}

DWORD WINAPI Watch(void*) {
    LONG seen = -1;
    for (;;) {
        Sleep(kHang);
        if (g_progress == seen) Abort("HANG");
        seen = g_progress;
    }
}

// Wine keeps the contents of a deleted file in memory. It reads a file again whose time has changed.
void ForgetSettings() {
    const std::wstring path = ProgramFolder() + L"settings.ini";
    HANDLE empty = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               CREATE_ALWAYS, 0, nullptr);
    if (empty != INVALID_HANDLE_VALUE) CloseHandle(empty);
    wchar_t value[8] = L"";
    GetPrivateProfileStringW(L"Settings", L"Intensity", L"", value, 8, path.c_str());
}

// A session whose CloseHandle failed holds its files open, which can then only be emptied.
void DeleteProgramFiles() {
    ForgetSettings();
    for (const wchar_t* file : {L"settings.ini", L"events.log"}) {
        const std::wstring path = ProgramFolder() + file;
        if (DeleteFileW(path.c_str()) != FALSE || GetLastError() == ERROR_FILE_NOT_FOUND) continue;
        HANDLE emptied =
            CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        nullptr, TRUNCATE_EXISTING, 0, nullptr);
        if (emptied != INVALID_HANDLE_VALUE) CloseHandle(emptied);
    }
}

}  // namespace

void ReportCrashesAndHangs() {
    AddVectoredExceptionHandler(1, OnCrash);
    CloseHandle(CreateThread(nullptr, 0, Watch, nullptr, 0, nullptr));
}

void NoteProgress() {
    g_progress = g_progress + 1;
}

void PrepareSession(std::vector<void (*)()> script) {
    ResetSimulatedPlatform();
    g_app = AppState{};
    g_platform.script = std::move(script);
}

void CleanUpSession() {
    // A program whose DestroyWindow failed has given its window up.
    while (HWND window = FindWindowW(kWindowClassName, nullptr)) {
        if (DestroyWindow(window) == FALSE) break;
    }
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    }
    UnregisterClassW(kWindowClassName, GetModuleHandleW(nullptr));
    g_monitorFunctions = {};
    DeleteProgramFiles();
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM",
                       L"GdiIcmGammaRange");
    NoteProgress();
}

std::wstring ProgramFolder() {
    wchar_t folder[MAX_PATH] = L"";
    SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder);
    return std::wstring(folder) + L"\\Ambrel2\\";
}
