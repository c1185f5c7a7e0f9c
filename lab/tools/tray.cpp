// Wine's notification area draws its icons itself and registers each as a tool of one tooltip control, which
// therefore has the rectangle and the tooltip of every icon. The control belongs to another process, so the
// query structure is allocated in that process's memory.
#include "tool.h"

#include <commctrl.h>

#include <optional>

namespace {

constexpr size_t kTooltipLength = 1024;

struct ToolQuery {
    TTTOOLINFOW tool;
    wchar_t tooltip[kTooltipLength];
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

// The result of a message. Empty if the taskbar does not answer.
std::optional<DWORD_PTR> Ask(HWND window, UINT message, WPARAM wParam, void* remote) {
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutW(window, message, wParam, reinterpret_cast<LPARAM>(remote), SMTO_NORMAL,
                             kAnswerTimeoutMs, &result)) {
        return {};
    }
    return result;
}

// Appends every icon. False if the taskbar does not answer: it may have icons then.
bool CollectTools(HWND tooltip, HANDLE process, ToolQuery* remote, std::vector<Json>& tools) {
    const std::optional<DWORD_PTR> count = Ask(tooltip, TTM_GETTOOLCOUNT, 0, nullptr);
    if (!count) {
        return false;
    }
    for (DWORD_PTR i = 0; i < *count; ++i) {
        ToolQuery query = {};
        query.tool.cbSize = sizeof(query.tool);
        query.tool.lpszText = remote->tooltip;
        WriteProcessMemory(process, remote, &query, sizeof(query), nullptr);
        const std::optional<DWORD_PTR> found = Ask(tooltip, TTM_ENUMTOOLSW, i, &remote->tool);
        if (!found) {
            return false;
        }
        if (!*found) {
            continue;
        }
        ReadProcessMemory(process, remote, &query, sizeof(query), nullptr);
        query.tooltip[kTooltipLength - 1] = L'\0';
        RECT rect = query.tool.rect;
        MapWindowPoints(query.tool.hwnd, nullptr, reinterpret_cast<POINT*>(&rect), 2);
        tools.push_back(JsonObject({{"left", rect.left},
                                    {"top", rect.top},
                                    {"right", rect.right},
                                    {"bottom", rect.bottom},
                                    {"tooltip", query.tooltip}}));
    }
    return true;
}

}  // namespace

// Every icon of the notification area: left, top, right, bottom on the screen, and tooltip.
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
    void* const memory = VirtualAllocEx(process, nullptr, sizeof(ToolQuery), MEM_COMMIT, PAGE_READWRITE);
    std::vector<Json> tools;
    const bool answered = memory && CollectTools(tooltip, process, static_cast<ToolQuery*>(memory), tools);
    if (memory) {
        VirtualFreeEx(process, memory, 0, MEM_RELEASE);
    }
    CloseHandle(process);
    answer = JsonArray(tools);
    return answered ? kToolOk : kToolFailed;
}
