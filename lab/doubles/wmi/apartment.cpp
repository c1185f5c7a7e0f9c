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

BOOL CALLBACK FindApartmentWindow(HWND window, LPARAM context) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    if (lstrcmpW(name, kApartmentClass) == 0) {
        *reinterpret_cast<HWND*>(context) = window;
        return FALSE;
    }
    return TRUE;
}

// The thread's window for incoming calls, a message-only window; null if there is none.
HWND ApartmentWindow() {
    for (HWND window = nullptr;
         (window = FindWindowExW(HWND_MESSAGE, window, kApartmentClass, nullptr)) != nullptr;) {
        if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) {
            return window;
        }
    }
    HWND found = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), FindApartmentWindow, reinterpret_cast<LPARAM>(&found));
    return found;
}

// Removes one of the messages that COM dispatches while it waits. PeekMessage also dispatches sent messages.
bool PeekDispatchedMessage(HWND apartment, MSG* message) {
    return (apartment != nullptr && PeekMessageW(message, apartment, 0, 0, PM_REMOVE)) ||
           PeekMessageW(message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE | (QS_PAINT << 16)) ||
           PeekMessageW(message, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE | (QS_TIMER << 16)) ||
           PeekMessageW(message, nullptr, 0, 0, PM_REMOVE | PM_QS_SENDMESSAGE);
}

// PeekMessage removes WM_QUIT regardless of the filter. It is posted again afterwards, as COM does.
void DispatchDuring(const Delay& delay) {
    HWND const apartment = ApartmentWindow();
    MSG quit = {};
    for (LONG64 left = delay.Left(); left > 0; left = delay.Left()) {
        MSG message = {};
        while (PeekDispatchedMessage(apartment, &message)) {
            if (message.message == WM_QUIT) {
                quit = message;
            } else {
                DispatchMessageW(&message);
            }
        }
        // Only new messages end the wait; those that stay in the queue do not.
        const DWORD wait = static_cast<DWORD>(left < 10 ? left : 10);
        MsgWaitForMultipleObjectsEx(0, nullptr, wait, QS_SENDMESSAGE | QS_PAINT | QS_TIMER, 0);
    }
    if (quit.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(quit.wParam));
    }
}

}  // namespace

HRESULT SimulateComCall(LONG64 delay) {
    if (!IsInSingleThreadedApartment()) {
        Wait(delay);
        return S_OK;
    }
    if (IsInUnansweredSentMessage()) {
        return RPC_E_CANTCALLOUT_ININPUTSYNCCALL;
    }
    if (delay > 0) {
        DispatchDuring(Delay(delay));
    }
    return S_OK;
}
