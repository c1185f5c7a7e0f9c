#include "tool.h"

namespace {

constexpr UINT kPatience = 2000;

// WM_GETTEXT and not GetWindowText: the latter does not read the controls of another process.
std::wstring ControlText(HWND control) {
    std::wstring text(4096, L'\0');
    DWORD_PTR length = 0;
    SendMessageTimeoutW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                        SMTO_ABORTIFHUNG, kPatience, &length);
    text.resize(length);
    return text;
}

struct BoxText {
    std::wstring text;
    std::wstring buttons;
};

BOOL CALLBACK CollectControl(HWND control, LPARAM parameter) {
    BoxText& box = *reinterpret_cast<BoxText*>(parameter);
    wchar_t name[64] = {};
    GetClassNameW(control, name, 64);
    if (lstrcmpiW(name, L"Static") == 0) {
        box.text += ControlText(control);
    } else if (lstrcmpiW(name, L"Button") == 0 && IsWindowVisible(control)) {
        wchar_t button[300] = {};
        wsprintfW(button, L"%d=%.250s;", GetDlgCtrlID(control), ControlText(control).c_str());
        box.buttons += button;
    }
    return TRUE;
}

BOOL CALLBACK PrintBox(HWND window, LPARAM) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    if (IsWindowVisible(window) && lstrcmpW(name, L"#32770") == 0) {
        BoxText box;
        EnumChildWindows(window, CollectControl, reinterpret_cast<LPARAM>(&box));
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        Print(L"0x%llx\t%ls\t%ls\t%ls\t0x%llx\t%lu\n", reinterpret_cast<ULONG_PTR>(window),
              Escape(ControlText(window)).c_str(), Escape(box.text).c_str(), Escape(box.buttons).c_str(),
              reinterpret_cast<ULONG_PTR>(GetWindow(window, GW_OWNER)), process);
    }
    return TRUE;
}

}  // namespace

// One visible dialog a line: handle, title, text of its static controls, its buttons as ID=caption;, owner,
// process.
int ListBoxes(const Arguments&) {
    EnumWindows(PrintBox, 0);
    return kToolOk;
}

// press HANDLE ID: presses that button of a dialog.
int PressButton(const Arguments& arguments) {
    const HWND box = FindTarget(arguments[0]);
    const HWND button = box ? GetDlgItem(box, static_cast<int>(Number(arguments[1]))) : nullptr;
    if (!button) {
        return kToolNotFound;
    }
    const WPARAM command = MAKEWPARAM(GetDlgCtrlID(button), BN_CLICKED);
    return PostMessageW(box, WM_COMMAND, command, reinterpret_cast<LPARAM>(button)) ? kToolOk : kToolFailed;
}
