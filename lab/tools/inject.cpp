#include "tool.h"

namespace {

// LoadLibraryW has the same address in every process and the signature of a thread function.
DWORD LoadInto(HANDLE process, const std::wstring& library) {
    const SIZE_T bytes = (library.size() + 1) * sizeof(wchar_t);
    void* const path = VirtualAllocEx(process, nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    const auto load = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "LoadLibraryW")));
    DWORD result = 0;
    if (path && WriteProcessMemory(process, path, library.c_str(), bytes, nullptr)) {
        const HANDLE thread = CreateRemoteThread(process, nullptr, 0, load, path, 0, nullptr);
        if (thread) {
            WaitForSingleObject(thread, INFINITE);
            GetExitCodeThread(thread, &result);
            CloseHandle(thread);
        }
    }
    VirtualFreeEx(process, path, 0, MEM_RELEASE);
    return result;
}

}  // namespace

// inject WINDOW LIBRARY: loads a library into the process that owns a window.
int InjectLibrary(const Arguments& arguments, Json&) {
    const HWND window = FindTarget(arguments[0]);
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    const HANDLE process = window ? OpenProcess(PROCESS_ALL_ACCESS, FALSE, id) : nullptr;
    if (!process) {
        return kToolNotFound;
    }
    const DWORD module = LoadInto(process, arguments[1]);
    CloseHandle(process);
    return module ? kToolOk : kToolFailed;
}
