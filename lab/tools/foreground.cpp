#include "tool.h"

namespace {

constexpr wchar_t kClass[] = L"LabOtherWindow";

LRESULT CALLBACK OtherProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

// Shows an ordinary window (class LabOtherWindow, 400 x 300 at 100,100) in the foreground until it is closed
// or the process is killed. Prints "ready" when it is shown.
int TakeForeground(const Arguments&, Json&) {
    WNDCLASSW description = {};
    description.lpfnWndProc = OtherProcedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = kClass;
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    RegisterClassW(&description);
    const HWND window = CreateWindowExW(0, kClass, L"Another program", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100,
                                        100, 400, 300, nullptr, nullptr, description.hInstance, nullptr);
    SetForegroundWindow(window);
    UpdateWindow(window);
    PrintReady();
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return kToolOk;
}
