#include "tool.h"

#include <memory>
#include <optional>

namespace {

std::wstring ClassOf(HWND window) {
    wchar_t name[257] = {};
    GetClassNameW(window, name, 257);
    return name;
}

std::wstring TitleOf(HWND window) {
    wchar_t title[1024] = {};
    GetWindowTextW(window, title, 1024);
    return title;
}

BOOL CALLBACK CollectVisible(HWND window, LPARAM parameter) {
    if (IsWindowVisible(window)) {
        RECT rect = {};
        DWORD process = 0;
        GetWindowRect(window, &rect);
        GetWindowThreadProcessId(window, &process);
        reinterpret_cast<std::vector<Json>*>(parameter)->push_back(
            JsonObject({{"handle", HandleText(window)},
                        {"window_class", ClassOf(window)},
                        {"title", TitleOf(window)},
                        {"left", rect.left},
                        {"top", rect.top},
                        {"right", rect.right},
                        {"bottom", rect.bottom},
                        {"process", process}}));
    }
    return TRUE;
}

}  // namespace

HWND FindTarget(const std::wstring& target) {
    if (target.starts_with(L"0x")) {
        const HWND window = reinterpret_cast<HWND>(static_cast<ULONG_PTR>(Number(target)));
        return IsWindow(window) ? window : nullptr;
    }
    return FindWindowW(target.c_str(), nullptr);
}

std::wstring HandleText(HWND window) {
    wchar_t text[32] = {};
    wsprintfW(text, L"0x%Ix", reinterpret_cast<ULONG_PTR>(window));
    return text;
}

// Every visible top-level window, topmost first: handle, class, title, left, top, right, bottom, process id.
int ListWindows(const Arguments&, Json& answer) {
    std::vector<Json> windows;
    EnumWindows(CollectVisible, reinterpret_cast<LPARAM>(&windows));
    answer = JsonArray(windows);
    return kToolOk;
}

// window TARGET: handle, class, title, rectangle, visible, foreground, enabled, process, thread, styles, dpi.
int DescribeWindow(const Arguments& arguments, Json& answer) {
    const HWND window = FindTarget(arguments[0]);
    if (!window) {
        return kToolNotFound;
    }
    RECT rect = {};
    DWORD process = 0;
    GetWindowRect(window, &rect);
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    answer = JsonObject({{"handle", reinterpret_cast<ULONG_PTR>(window)},
                         {"class", ClassOf(window)},
                         {"title", TitleOf(window)},
                         {"left", rect.left},
                         {"top", rect.top},
                         {"right", rect.right},
                         {"bottom", rect.bottom},
                         {"visible", IsWindowVisible(window)},
                         {"foreground", static_cast<int>(GetForegroundWindow() == window)},
                         {"enabled", IsWindowEnabled(window)},
                         {"process", process},
                         {"thread", thread},
                         {"style", static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE))},
                         {"extended_style", static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE))},
                         {"dpi", GetDpiForWindow(window)}});
    return kToolOk;
}

// Ends the wait in CallWindow.
void CALLBACK StoreResult(HWND, UINT, ULONG_PTR context, LRESULT result) {
    *reinterpret_cast<std::optional<LRESULT>*>(context) = result;
}

// Sends with a callback. In contrast to SendMessage, COM allows the receiver to make calls while it handles
// the message, as it does for a posted one, and the sender can still wait for the end. Empty on a time-out.
std::optional<LRESULT> CallWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam, DWORD timeout) {
    auto stored = std::make_unique<std::optional<LRESULT>>();
    const ULONGLONG end = GetTickCount64() + timeout;
    if (!SendMessageCallbackW(window, message, wParam, lParam, StoreResult,
                              reinterpret_cast<ULONG_PTR>(stored.get()))) {
        return {};
    }
    while (!*stored) {
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            // The callback may still be called and store its result.
            static_cast<void>(stored.release());
            return {};
        }
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT, 0);
        MSG queued = {};
        while (PeekMessageW(&queued, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&queued);
        }
    }
    return *stored;
}

// message TARGET post|send|call MESSAGE WPARAM LPARAM [TIMEOUT]: the result of the message; for a post,
// whether Windows has accepted it. The time-out is in ms.
int SendToWindow(const Arguments& arguments, Json& answer) {
    const HWND window = FindTarget(arguments[0]);
    if (!window) {
        return kToolNotFound;
    }
    const UINT message = static_cast<UINT>(Number(arguments[2]));
    const WPARAM wParam = static_cast<WPARAM>(Number(arguments[3]));
    const LPARAM lParam = static_cast<LPARAM>(Number(arguments[4]));
    if (arguments[1] == L"post") {
        answer = JsonObject({{"result", PostMessageW(window, message, wParam, lParam)}});
        return kToolOk;
    }
    const UINT timeout = arguments.size() > 5 ? static_cast<UINT>(Number(arguments[5])) : 10000;
    if (arguments[1] == L"call") {
        const std::optional<LRESULT> result = CallWindow(window, message, wParam, lParam, timeout);
        if (!result) {
            answer = JsonObject({{"error", ERROR_TIMEOUT}});
            return kToolFailed;
        }
        answer = JsonObject({{"result", static_cast<long long>(*result)}});
        return kToolOk;
    }
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, timeout, &result)) {
        answer = JsonObject({{"error", GetLastError()}});
        return kToolFailed;
    }
    answer = JsonObject({{"result", static_cast<long long>(result)}});
    return kToolOk;
}
