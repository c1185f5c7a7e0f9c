// The report is copied while another thread's window owns or holds the clipboard in every way.
#include <algorithm>
#include <iterator>

#include "app/state/app_state.h"
#include "faults/session.h"
#include "soak/attack.h"
#include "soak/properties.h"
#include "ui/support_copy.h"

namespace {

enum class Owner { Nobody, Holder, HolderWithoutWindow, Text, Delayed, Destroyed, Empty, Last };

constexpr UINT kPerform = WM_APP + 1;  // wParam: an Owner
constexpr wchar_t kText[] = L"text of another program";

HWND g_owner = nullptr;
HANDLE g_ready = nullptr;

void OwnText() {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, sizeof(kText));
    void* memory = GlobalLock(block);
    if (memory == nullptr) return;
    std::copy_n(kText, std::size(kText), static_cast<wchar_t*>(memory));
    GlobalUnlock(block);
    if (SetClipboardData(CF_UNICODETEXT, block) == nullptr) GlobalFree(block);
}

void Own(HWND window, Owner owner) {
    if (OpenClipboard(window) == FALSE) return;
    EmptyClipboard();
    if (owner == Owner::Text) OwnText();
    if (owner == Owner::Delayed) SetClipboardData(CF_UNICODETEXT, nullptr);
    CloseClipboard();
}

void OwnAndDestroy(HINSTANCE instance) {
    HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, instance, nullptr);
    Own(window, Owner::Delayed);
    DestroyWindow(window);
}

void Perform(HWND window, Owner owner) {
    // Releases what an earlier owner held.
    CloseClipboard();
    switch (owner) {
        case Owner::Nobody:
        case Owner::Last: return;
        case Owner::Holder: OpenClipboard(window); return;
        case Owner::HolderWithoutWindow: OpenClipboard(nullptr); return;
        case Owner::Destroyed: OwnAndDestroy(GetModuleHandleW(nullptr)); return;
        case Owner::Text:
        case Owner::Delayed:
        case Owner::Empty: Own(window, owner); return;
    }
}

LRESULT CALLBACK OwnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kPerform) {
        Perform(window, static_cast<Owner>(wParam));
        return 0;
    }
    if (message == WM_RENDERFORMAT) OwnText();
    return DefWindowProcW(window, message, wParam, lParam);
}

DWORD WINAPI RunOwner(void*) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = OwnerProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"ClipboardOwner";
    RegisterClassW(&windowClass);
    g_owner = CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              windowClass.hInstance, nullptr);
    SetEvent(g_ready);
    // Not GetMessageW, which is the program's.
    for (;;) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
            DispatchMessageW(&message);
        MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT);
    }
}

void StartOwnerOnce() {
    if (g_owner != nullptr) return;
    g_ready = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(CreateThread(nullptr, 0, RunOwner, nullptr, 0, nullptr));
    WaitForSingleObject(g_ready, INFINITE);
}

// The text on the clipboard; empty if there is none.
std::wstring ClipboardText() {
    std::wstring text;
    if (OpenClipboard(g_app.mainWindow) == FALSE) {
        Require(false, "the clipboard is left open");
        return text;
    }
    HANDLE block = GetClipboardData(CF_UNICODETEXT);
    if (const auto* memory = static_cast<const wchar_t*>(block != nullptr ? GlobalLock(block) : nullptr)) {
        text = memory;
        GlobalUnlock(block);
    }
    CloseClipboard();
    return text;
}

bool IsReport(const std::wstring& text) {
    return text.find(L"Ambrel") != std::wstring::npos && text.size() > 1000;
}

void CopyWith(Owner owner) {
    RecordStep("owner " + std::to_string(static_cast<int>(owner)));
    SendMessageW(g_owner, kPerform, static_cast<WPARAM>(owner), 0);
    g_app.copiedUntil = 0;
    CopySupportBundle();
    const bool held = owner == Owner::Holder || owner == Owner::HolderWithoutWindow;
    Require(ShowsCopied() != held,
            held ? "a copy to a clipboard in use is shown as done" : "the report is not copied");
    SendMessageW(g_owner, kPerform, static_cast<WPARAM>(Owner::Nobody), 0);
    Require(IsReport(ClipboardText()) || held, "the report is not on the clipboard");
}

void CopyReports() {
    StartOwnerOnce();
    for (int i = 0; i < g_round->steps && !Failed(); ++i) {
        CopyWith(static_cast<Owner>(g_round->random.Below(static_cast<unsigned>(Owner::Last))));
        DispatchQueue();
        RequireConsistentState();
    }
}

}  // namespace

void AttackClipboard() {
    RunSessionWith(CopyReports);
}
