#include "tool.h"

namespace {

// A library that can be injected exports this hook and sets this event when its hook is called: see
// doubles/injected.cpp.
constexpr char kHook[] = "InjectedHook";
constexpr wchar_t kInjected[] = L"lab.injected";

// Windows loads the library of a hook in the thread that it hooks. A thread created in the program would do
// so too, but can deadlock with the program's own thread under Wine.
bool LoadInto(HWND window, DWORD thread, HMODULE library, HANDLE injected) {
    const auto procedure =
        reinterpret_cast<HOOKPROC>(reinterpret_cast<void*>(GetProcAddress(library, kHook)));
    const HHOOK hook = procedure ? SetWindowsHookExW(WH_GETMESSAGE, procedure, library, thread) : nullptr;
    if (!hook) {
        return false;
    }
    const bool loaded = PostMessageW(window, WM_NULL, 0, 0) &&
                        WaitForSingleObject(injected, kAnswerTimeoutMs) == WAIT_OBJECT_0;
    UnhookWindowsHookEx(hook);
    return loaded;
}

}  // namespace

// inject WINDOW LIBRARY: loads a library into the process that owns a window, in the window's thread.
int InjectLibrary(const Arguments& arguments, Json&) {
    const HWND window = FindTarget(arguments[0]);
    const DWORD thread = window ? GetWindowThreadProcessId(window, nullptr) : 0;
    if (thread == 0) {
        return kToolNotFound;
    }
    // Without its references the library is not initialised in this process.
    const HMODULE library = LoadLibraryExW(arguments[1].c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
    const HANDLE injected = CreateEventW(nullptr, FALSE, FALSE, kInjected);
    const bool loaded = library && injected && LoadInto(window, thread, library, injected);
    CloseHandle(injected);
    FreeLibrary(library);
    return loaded ? kToolOk : kToolFailed;
}
