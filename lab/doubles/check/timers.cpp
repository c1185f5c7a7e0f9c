#include "check.h"

// A later timer with another id shows whether the timer has fired or is held.
int TryTimer(const Arguments&) {
    constexpr UINT_PTR kId = 4;
    constexpr UINT_PTR kLaterId = 1;
    constexpr UINT kPeriod = 10;
    constexpr UINT kLaterPeriod = 100;
    const HWND window =
        CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetTimer(window, kId, kPeriod, nullptr);
    SetTimer(window, kLaterId, kLaterPeriod, nullptr);
    bool fired = false;
    MSG message = {};
    while (GetMessageW(&message, window, WM_TIMER, WM_TIMER) > 0 && message.wParam != kLaterId) {
        fired = true;
    }
    DestroyWindow(window);
    PrintRow({fired});
    return kToolOk;
}
