#include "tool.h"

namespace {

// A copy of bytes in the process of a window. Freed by the destructor.
struct RemoteBytes {
    HANDLE process = nullptr;
    void* address = nullptr;

    RemoteBytes(HWND window, const std::string& bytes) {
        DWORD id = 0;
        GetWindowThreadProcessId(window, &id);
        process = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_WRITE, FALSE, id);
        if (!process) {
            return;
        }
        address =
            VirtualAllocEx(process, nullptr, bytes.size() + 1, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
        if (address && !WriteProcessMemory(process, address, bytes.data(), bytes.size(), nullptr)) {
            Free();
        }
    }
    ~RemoteBytes() {
        Free();
        if (process) {
            CloseHandle(process);
        }
    }
    RemoteBytes(const RemoteBytes&) = delete;
    RemoteBytes& operator=(const RemoteBytes&) = delete;

    void Free() {
        if (address) {
            VirtualFreeEx(process, address, 0, MEM_RELEASE);
        }
        address = nullptr;
    }
};

std::string FromHex(const std::wstring& text) {
    std::string bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes += static_cast<char>(Number(L"0x" + text.substr(i, 2)));
    }
    return bytes;
}

}  // namespace

// message-data TARGET MESSAGE WPARAM HEX: sends the message with lParam pointing to a copy of these bytes in
// the target's process, as Windows does for messages that carry a structure. The answer is {result}.
int SendWithData(const Arguments& arguments, Json& answer) {
    const HWND window = FindTarget(arguments[0]);
    if (!window) {
        return kToolNotFound;
    }
    const RemoteBytes data(window, FromHex(arguments[3]));
    if (!data.address) {
        return kToolFailed;
    }
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutW(
            window, static_cast<UINT>(Number(arguments[1])), static_cast<WPARAM>(Number(arguments[2])),
            reinterpret_cast<LPARAM>(data.address), SMTO_NORMAL, kAnswerTimeoutMs, &result)) {
        answer = JsonObject({{"error", GetLastError()}});
        return kToolFailed;
    }
    answer = JsonObject({{"result", static_cast<long long>(result)}});
    return kToolOk;
}
