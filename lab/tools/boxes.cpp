#include "tool.h"

namespace {

// WM_GETTEXT and not GetWindowText: the latter does not read the controls of another process. False if the
// control does not answer or no longer exists.
bool ReadText(HWND control, std::wstring& text) {
    text.assign(4096, L'\0');
    DWORD_PTR length = 0;
    const bool answered =
        SendMessageTimeoutW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                            SMTO_NORMAL, kAnswerTimeoutMs, &length) != 0;
    text.resize(length);
    return answered;
}

struct BoxText {
    std::wstring text;
    std::vector<Json> buttons;
    bool complete = true;
};

BOOL CALLBACK CollectControl(HWND control, LPARAM parameter) {
    BoxText& box = *reinterpret_cast<BoxText*>(parameter);
    wchar_t name[64] = {};
    std::wstring text;
    GetClassNameW(control, name, 64);
    if (lstrcmpiW(name, L"Static") == 0) {
        box.complete = ReadText(control, text);
        box.text += text;
    } else if (lstrcmpiW(name, L"Button") == 0 && IsWindowVisible(control)) {
        box.complete = ReadText(control, text);
        box.buttons.push_back(JsonObject({{"id", GetDlgCtrlID(control)}, {"caption", text}}));
    }
    return box.complete;
}

BOOL CALLBACK CollectBox(HWND window, LPARAM parameter) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    if (IsWindowVisible(window) && lstrcmpW(name, L"#32770") == 0) {
        BoxText box;
        std::wstring title;
        EnumChildWindows(window, CollectControl, reinterpret_cast<LPARAM>(&box));
        const bool complete = box.complete && ReadText(window, title);
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        // A box that has closed in the meantime is none.
        if (!complete && !IsWindowVisible(window)) {
            return TRUE;
        }
        reinterpret_cast<std::vector<Json>*>(parameter)->push_back(
            JsonObject({{"handle", HandleText(window)},
                        {"title", title},
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
