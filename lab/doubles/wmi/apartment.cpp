#include "apartment.h"

#include <objbase.h>

#include "../hardware/record.h"
#include "../hardware/state.h"

namespace {

// The windows through which COM delivers calls to a single-threaded apartment have this class.
constexpr wchar_t kApartmentClass[] = L"OleMainThreadWndClass";

bool IsInSingleThreadedApartment() {
    APTTYPE type = APTTYPE_MTA;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) &&
           (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

bool IsInUnansweredSentMessage() {
    return (InSendMessageEx(nullptr) & (ISMEX_SEND | ISMEX_REPLIED)) == ISMEX_SEND;
}

BOOL CALLBACK TakeCallsOf(HWND window, LPARAM context) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    if (lstrcmpW(name, kApartmentClass) == 0) {
        *reinterpret_cast<HWND*>(context) = window;
        return FALSE;
    }
    return TRUE;
}

// The thread's own window for incoming calls, a child of the window of messages; null without one.
HWND ApartmentWindow() {
    for (HWND window = nullptr;
         (window = FindWindowExW(HWND_MESSAGE, window, kApartmentClass, nullptr)) != nullptr;) {
        if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) {
            return window;
        }
    }
    HWND found = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), TakeCallsOf, reinterpret_cast<LPARAM>(&found));
    return found;
}

// Takes one message that COM dispatches while it waits. Looking for it also dispatches what was sent.
bool TakeMessage(HWND apartment, MSG* message) {
    return (apartment != nullptr && PeekMessageW(message, apartment, 0, 0, PM_REMOVE)) ||
           PeekMessageW(message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE | (QS_PAINT << 16)) ||
           PeekMessageW(message, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE | (QS_TIMER << 16)) ||
           PeekMessageW(message, nullptr, 0, 0, PM_REMOVE | PM_QS_SENDMESSAGE);
}

// A WM_QUIT, which no filter keeps from being taken, is posted again afterwards, as COM does.
void DispatchUntil(LONG64 end) {
    HWND const apartment = ApartmentWindow();
    MSG quit = {};
    for (LONG64 left = end - Now(); left > 0; left = end - Now()) {
        MSG message = {};
        while (TakeMessage(apartment, &message)) {
            if (message.message == WM_QUIT) {
                quit = message;
            } else {
                DispatchMessageW(&message);
            }
        }
        // Woken by what is new; what stays in the queue does not wake it again.
        const DWORD wait = static_cast<DWORD>(left < 10 ? left : 10);
        MsgWaitForMultipleObjectsEx(0, nullptr, wait, QS_SENDMESSAGE | QS_PAINT | QS_TIMER, 0);
    }
    if (quit.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(quit.wParam));
    }
}

}  // namespace

HRESULT BeginComCall(LONG64 delay) {
    if (!IsInSingleThreadedApartment()) {
        Wait(delay);
        return S_OK;
    }
    if (IsInUnansweredSentMessage()) {
        return RPC_E_CANTCALLOUT_ININPUTSYNCCALL;
    }
    if (delay > 0) {
        Count(Counter::kWaiting, 1);
        DispatchUntil(Now() + delay);
        Count(Counter::kWaiting, -1);
    }
    return S_OK;
}
