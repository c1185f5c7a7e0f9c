#include "tool.h"

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

BOOL CALLBACK PrintVisible(HWND window, LPARAM) {
    if (IsWindowVisible(window)) {
        RECT rect = {};
        DWORD process = 0;
        GetWindowRect(window, &rect);
        GetWindowThreadProcessId(window, &process);
        Print(L"0x%llx\t%ls\t%ls\t%ld\t%ld\t%ld\t%ld\t%lu\n", reinterpret_cast<ULONG_PTR>(window),
              Escape(ClassOf(window)).c_str(), Escape(TitleOf(window)).c_str(), rect.left, rect.top,
              rect.right, rect.bottom, process);
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

// One visible top-level window a line, topmost first: handle, class, title, left, top, right, bottom, process
// id.
int ListWindows(const Arguments&) {
    EnumWindows(PrintVisible, 0);
    return kToolOk;
}

// window TARGET: its facts as name=value lines.
int ShowWindowFacts(const Arguments& arguments) {
    const HWND window = FindTarget(arguments[0]);
    if (!window) {
        return kToolNotFound;
    }
    RECT rect = {};
    DWORD process = 0;
    GetWindowRect(window, &rect);
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    Print(L"handle=0x%llx\nclass=%ls\ntitle=%ls\n", reinterpret_cast<ULONG_PTR>(window),
          Escape(ClassOf(window)).c_str(), Escape(TitleOf(window)).c_str());
    Print(L"left=%ld\ntop=%ld\nright=%ld\nbottom=%ld\n", rect.left, rect.top, rect.right, rect.bottom);
    Print(L"visible=%d\nforeground=%d\nenabled=%d\nprocess=%lu\nthread=%lu\n", IsWindowVisible(window),
          GetForegroundWindow() == window, IsWindowEnabled(window), process, thread);
    Print(L"style=0x%lx\nextended_style=0x%lx\ndpi=%u\n", GetWindowLongW(window, GWL_STYLE),
          GetWindowLongW(window, GWL_EXSTYLE), GetDpiForWindow(window));
    return kToolOk;
}

// message TARGET post|send MESSAGE WPARAM LPARAM [MILLISECONDS]: result=N, which for a post is only its
// acceptance.
int SendToWindow(const Arguments& arguments) {
    const HWND window = FindTarget(arguments[0]);
    if (!window) {
        return kToolNotFound;
    }
    const UINT message = static_cast<UINT>(Number(arguments[2]));
    const WPARAM wParam = static_cast<WPARAM>(Number(arguments[3]));
    const LPARAM lParam = static_cast<LPARAM>(Number(arguments[4]));
    if (arguments[1] == L"post") {
        Print(L"result=%d\n", PostMessageW(window, message, wParam, lParam));
        return kToolOk;
    }
    const UINT patience = arguments.size() > 5 ? static_cast<UINT>(Number(arguments[5])) : 10000;
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, patience, &result)) {
        Print(L"error=%lu\n", GetLastError());
        return kToolFailed;
    }
    Print(L"result=%lld\n", static_cast<long long>(result));
    return kToolOk;
}
