// Stands in for a program that is in an installer's way. It prints "ready" and stays until it is killed, or
// until its standard input ends.
//     stand_in refuse     has the program's window and mutex, and does not agree to end
//     stand_in starting   has the program's mutex, but no window yet
//     stand_in hold FILE  has a file open and lets others only read it
#include <windows.h>

#include <cstdio>
#include <cwchar>

namespace {

LRESULT CALLBACK RefuseToEnd(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_QUERYENDSESSION) return FALSE;
    return DefWindowProcW(window, message, wParam, lParam);
}

int SayReady() {
    std::puts("ready");
    std::fflush(stdout);
    return 0;
}

int StayUntilInputEnds() {
    SayReady();
    while (std::getchar() != EOF) {
    }
    return 0;
}

int Refuse() {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = RefuseToEnd;
    windowClass.lpszClassName = L"Ambrel2Class";
    RegisterClassW(&windowClass);
    if (CreateWindowW(windowClass.lpszClassName, L"Ambrel", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr,
                      nullptr) == nullptr) {
        return 1;
    }
    SayReady();
    for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0;)
        DispatchMessageW(&message);
    return 0;
}

int Hold(const wchar_t* file) {
    const HANDLE held = CreateFileW(file, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    return held == INVALID_HANDLE_VALUE ? 1 : StayUntilInputEnds();
}

}  // namespace

int wmain(int count, wchar_t** words) {
    if (count == 3 && std::wcscmp(words[1], L"hold") == 0) return Hold(words[2]);
    if (count != 2) return 1;
    CreateMutexW(nullptr, TRUE, L"Global\\Ambrel2SingleInstance");
    return std::wcscmp(words[1], L"refuse") == 0 ? Refuse() : StayUntilInputEnds();
}
