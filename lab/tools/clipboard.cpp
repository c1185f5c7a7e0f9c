#include "tool.h"

namespace {

// Another program may hold the clipboard for a moment, and one that is killed until Wine's server notices.
bool OpenClipboardWithRetries(HWND owner) {
    const ULONGLONG end = GetTickCount64() + kAnswerTimeoutMs;
    while (!OpenClipboard(owner)) {
        if (GetTickCount64() >= end) {
            return false;
        }
        Sleep(25);
    }
    return true;
}

HGLOBAL CopyToGlobal(const std::wstring& text) {
    const size_t size = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
    if (void* const memory = block ? GlobalLock(block) : nullptr) {
        CopyMemory(memory, text.c_str(), size);
        GlobalUnlock(block);
    }
    return block;
}

}  // namespace

// The clipboard's Unicode text; kToolNotFound if it contains none.
int GetClipboardText(const Arguments&, Json& answer) {
    if (!OpenClipboardWithRetries(nullptr)) {
        return kToolFailed;
    }
    const HANDLE block = GetClipboardData(CF_UNICODETEXT);
    const wchar_t* const text = block ? static_cast<const wchar_t*>(GlobalLock(block)) : nullptr;
    if (text) {
        answer = text;
        GlobalUnlock(block);
    }
    CloseClipboard();
    return text ? kToolOk : kToolNotFound;
}

// clipboard-set TEXT: copies the text to the clipboard, where it stays after the tool has ended.
int SetClipboardText(const Arguments& arguments, Json&) {
    // Windows refuses the data if the clipboard was emptied without an owner window.
    const HWND owner =
        CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    if (!OpenClipboardWithRetries(owner)) {
        DestroyWindow(owner);
        return kToolFailed;
    }
    EmptyClipboard();
    const bool stored = SetClipboardData(CF_UNICODETEXT, CopyToGlobal(arguments[0])) != nullptr;
    CloseClipboard();
    DestroyWindow(owner);
    return stored ? kToolOk : kToolFailed;
}

// Keeps the clipboard open until the process is killed, so that no other program can open it. Prints "ready"
// when the clipboard is open.
int HoldClipboard(const Arguments&, Json&) {
    if (!OpenClipboardWithRetries(nullptr)) {
        return kToolFailed;
    }
    PrintReady();
    Sleep(INFINITE);
    return kToolOk;
}
