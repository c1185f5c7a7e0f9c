// A minimal program of this kind: a hidden window, a tray icon and a message loop.
#include "win32/platform.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, wchar_t*, int) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = L"BenchEmptyProgram";
    RegisterClassW(&windowClass);
    NOTIFYICONDATAW icon = {};
    icon.cbSize = sizeof(icon);
    icon.hWnd =
        CreateWindowW(L"BenchEmptyProgram", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, instance, nullptr);
    icon.uFlags = NIF_ICON | NIF_TIP;
    icon.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    lstrcpyW(icon.szTip, L"Ambrel bench");
    Shell_NotifyIconW(NIM_ADD, &icon);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}
