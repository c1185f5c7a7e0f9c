#include "tool.h"

namespace {

constexpr UINT kTimeoutMs = 2000;

// WM_GETTEXT and not GetWindowText: the latter does not read the controls of another process.
std::wstring ControlText(HWND control) {
    std::wstring text(4096, L'\0');
    DWORD_PTR length = 0;
    SendMessageTimeoutW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                        SMTO_ABORTIFHUNG, kTimeoutMs, &length);
    text.resize(length);
    return text;
}

struct BoxText {
    std::wstring text;
    std::vector<Json> buttons;
};

BOOL CALLBACK CollectControl(HWND control, LPARAM parameter) {
    BoxText& box = *reinterpret_cast<BoxText*>(parameter);
    wchar_t name[64] = {};
    GetClassNameW(control, name, 64);
    if (lstrcmpiW(name, L"Static") == 0) {
        box.text += ControlText(control);
    } else if (lstrcmpiW(name, L"Button") == 0 && IsWindowVisible(control)) {
        box.buttons.push_back(JsonObject({{"id", GetDlgCtrlID(control)}, {"caption", ControlText(control)}}));
    }
    return TRUE;
}

BOOL CALLBACK CollectBox(HWND window, LPARAM parameter) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    if (IsWindowVisible(window) && lstrcmpW(name, L"#32770") == 0) {
        BoxText box;
        EnumChildWindows(window, CollectControl, reinterpret_cast<LPARAM>(&box));
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        reinterpret_cast<std::vector<Json>*>(parameter)->push_back(
            JsonObject({{"handle", HandleText(window)},
                        {"title", ControlText(window)},
                        {"text", box.text},
                        {"buttons", JsonArray(box.buttons)},
                        {"owner", HandleText(GetWindow(window, GW_OWNER))},
                        {"process", process}}));
    }
    return TRUE;
}

}  // namespace

// Every visible dialog: handle, title, text of its static controls, its buttons' ids and captions, owner,
// process.
int ListBoxes(const Arguments&, Json& answer) {
    std::vector<Json> boxes;
    EnumWindows(CollectBox, reinterpret_cast<LPARAM>(&boxes));
    answer = JsonArray(boxes);
    return kToolOk;
}

// press HANDLE ID: presses the button with this id in a dialog.
int PressButton(const Arguments& arguments, Json&) {
    const HWND box = FindTarget(arguments[0]);
    const HWND button = box ? GetDlgItem(box, static_cast<int>(Number(arguments[1]))) : nullptr;
    if (!button) {
        return kToolNotFound;
    }
    const WPARAM command = MAKEWPARAM(GetDlgCtrlID(button), BN_CLICKED);
    return PostMessageW(box, WM_COMMAND, command, reinterpret_cast<LPARAM>(button)) ? kToolOk : kToolFailed;
}
