// A stand-in for a program that blocks an installer. It prints "ready" and runs until it is killed, or until
// its standard input ends.
//     stand_in refuse     has the program's window and mutex, and refuses to end
//     stand_in starting   has the program's mutex, but no window yet
//     stand_in hold FILE  keeps a file open and shares it for reading only
// It also reports the state of an installer's check box, and sets it first if a state is given:
//     stand_in box CAPTION [0|1]   prints checked=0|1 enabled=0|1
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

struct Search {
    const wchar_t* caption;
    HWND found;
};

BOOL CALLBACK CompareCaption(HWND window, LPARAM parameter) {
    Search& search = *reinterpret_cast<Search*>(parameter);
    wchar_t text[256] = {};
    SendMessageW(window, WM_GETTEXT, 256, reinterpret_cast<LPARAM>(text));
    if (std::wcscmp(text, search.caption) == 0) search.found = window;
    return search.found == nullptr;
}

BOOL CALLBACK SearchDialog(HWND window, LPARAM parameter) {
    wchar_t name[16] = {};
    GetClassNameW(window, name, 16);
    if (std::wcscmp(name, L"#32770") == 0) EnumChildWindows(window, CompareCaption, parameter);
    return reinterpret_cast<Search*>(parameter)->found == nullptr;
}

int ShowOrSetBox(const wchar_t* caption, const wchar_t* state) {
    Search search = {caption, nullptr};
    EnumWindows(SearchDialog, reinterpret_cast<LPARAM>(&search));
    if (search.found == nullptr) return 1;
    if (state != nullptr)
        SendMessageW(search.found, BM_SETCHECK, *state == L'1' ? BST_CHECKED : BST_UNCHECKED, 0);
    std::printf("checked=%d enabled=%d\n", SendMessageW(search.found, BM_GETCHECK, 0, 0) == BST_CHECKED,
                IsWindowEnabled(search.found) != FALSE);
    return 0;
}

int Hold(const wchar_t* file) {
    const HANDLE held = CreateFileW(file, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    return held == INVALID_HANDLE_VALUE ? 1 : StayUntilInputEnds();
}

}  // namespace

int wmain(int count, wchar_t** words) {
    if (count >= 3 && std::wcscmp(words[1], L"box") == 0) {
        return ShowOrSetBox(words[2], count > 3 ? words[3] : nullptr);
    }
    if (count == 3 && std::wcscmp(words[1], L"hold") == 0) return Hold(words[2]);
    if (count != 2) return 1;
    CreateMutexW(nullptr, TRUE, L"Global\\Ambrel2SingleInstance");
    return std::wcscmp(words[1], L"refuse") == 0 ? Refuse() : StayUntilInputEnds();
}
