// Wine's notification area paints its icons itself and gives each a tool of one tooltip control, which
// therefore knows where each icon is and what its tip says. The control belongs to another process: a
// question is put into that process's memory first.
#include "tool.h"

#include <commctrl.h>

namespace {

constexpr UINT kPatience = 2000;
constexpr size_t kTipLetters = 1024;

struct Question {
    TTTOOLINFOW tool;
    wchar_t tip[kTipLetters];
};

HWND FindTooltip(DWORD process) {
    HWND found = nullptr;
    while ((found = FindWindowExW(nullptr, found, TOOLTIPS_CLASSW, nullptr)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(found, &owner);
        if (owner == process) {
            return found;
        }
    }
    return nullptr;
}

DWORD_PTR Ask(HWND window, UINT message, WPARAM wParam, void* remote) {
    DWORD_PTR result = 0;
    SendMessageTimeoutW(window, message, wParam, reinterpret_cast<LPARAM>(remote), SMTO_ABORTIFHUNG,
                        kPatience, &result);
    return result;
}

std::vector<Json> CollectTools(HWND tooltip, HANDLE process, Question* remote) {
    std::vector<Json> tools;
    const DWORD_PTR count = Ask(tooltip, TTM_GETTOOLCOUNT, 0, nullptr);
    for (DWORD_PTR i = 0; i < count; ++i) {
        Question question = {};
        question.tool.cbSize = sizeof(question.tool);
        question.tool.lpszText = remote->tip;
        WriteProcessMemory(process, remote, &question, sizeof(question), nullptr);
        if (!Ask(tooltip, TTM_ENUMTOOLSW, i, &remote->tool)) {
            continue;
        }
        ReadProcessMemory(process, remote, &question, sizeof(question), nullptr);
        question.tip[kTipLetters - 1] = L'\0';
        RECT rect = question.tool.rect;
        MapWindowPoints(question.tool.hwnd, nullptr, reinterpret_cast<POINT*>(&rect), 2);
        tools.push_back(JsonObject({{"left", rect.left},
                                    {"top", rect.top},
                                    {"right", rect.right},
                                    {"bottom", rect.bottom},
                                    {"tip", question.tip}}));
    }
    return tools;
}

}  // namespace

// Every icon of the notification area: left, top, right, bottom on the screen, tip.
int ListTrayIcons(const Arguments&, Json& answer) {
    DWORD processId = 0;
    const HWND taskbar = FindWindowW(L"Shell_TrayWnd", nullptr);
    GetWindowThreadProcessId(taskbar, &processId);
    const HWND tooltip = taskbar ? FindTooltip(processId) : nullptr;
    if (!tooltip) {
        return kToolNotFound;
    }
    const HANDLE process =
        OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, processId);
    if (!process) {
        return kToolFailed;
    }
    void* const memory = VirtualAllocEx(process, nullptr, sizeof(Question), MEM_COMMIT, PAGE_READWRITE);
    if (memory) {
        answer = JsonArray(CollectTools(tooltip, process, static_cast<Question*>(memory)));
        VirtualFreeEx(process, memory, 0, MEM_RELEASE);
    }
    CloseHandle(process);
    return memory ? kToolOk : kToolFailed;
}
