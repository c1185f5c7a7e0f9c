// The hook through which a library gets into the program (see tools/inject.cpp): Windows loads the library to
// call it. Everything else happens when the library is initialised.
#include <windows.h>

extern "C" __declspec(dllexport) LRESULT CALLBACK InjectedHook(int code, WPARAM wParam, LPARAM lParam) {
    // The library stays when the hook is removed.
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&InjectedHook), &module);
    if (const HANDLE injected = OpenEventW(EVENT_MODIFY_STATE, FALSE, L"lab.injected")) {
        SetEvent(injected);
        CloseHandle(injected);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}
