#include "ui/support_copy.h"

#include <cstring>
#include <string>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "diag/support_bundle.h"
#include "store/event_log.h"
#include "win32/guards.h"

namespace {

constexpr std::uint64_t kCopiedIndicationMs = 5000;

// More than the longest report takes while it is built: at most 500 lines of the log, 16 KiB of events.log
// and five values of 4 KiB from the registry, each in up to three copies.
constexpr std::size_t kReportMemory = std::size_t{8} * 1024 * 1024;

// A text that runs out of memory halfway would end the process.
bool HasMemoryForReport() {
    void* probe = VirtualAlloc(nullptr, kReportMemory, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (probe != nullptr) VirtualFree(probe, 0, MEM_RELEASE);
    return probe != nullptr;
}

// False if memory runs out or the clipboard refuses the text. Requires an open clipboard.
bool SetClipboardText(const std::wstring& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    GlobalBlock copy(bytes);
    if (copy.block == nullptr) return false;
    void* memory = GlobalLock(copy.block);
    if (memory == nullptr) return false;
    std::memcpy(memory, text.c_str(), bytes);
    GlobalUnlock(copy.block);
    if (SetClipboardData(CF_UNICODETEXT, copy.block) == nullptr) return false;
    copy.Release();
    return true;
}

enum class CopyResult {
    Copied,
    Failed,         // the clipboard keeps its contents
    FailedEmptied,  // the clipboard is empty
};

CopyResult CopyToClipboard(const std::wstring& text) {
    const ClipboardSession clipboard(g_app.mainWindow);
    if (!clipboard.open) return CopyResult::Failed;
    const bool emptied = EmptyClipboard() != FALSE;
    if (SetClipboardText(text)) return CopyResult::Copied;
    return emptied ? CopyResult::FailedEmptied : CopyResult::Failed;
}

}  // namespace

void CopySupportBundle() {
    const std::wstring text = HasMemoryForReport() ? BuildSupportBundle() : std::wstring();
    const CopyResult result = text.empty() ? CopyResult::Failed : CopyToClipboard(text);
    if (result == CopyResult::Copied) {
        LogEvent("Support bundle copied to clipboard (%zu chars)", text.size());
        g_app.copiedUntil = GetTickCount64() + kCopiedIndicationMs;
        StartTimer(TimerId::CopiedIndicationEnd);
    } else {
        LogEvent("Support bundle copy failed");
        // The report of an earlier copy can no longer be pasted.
        if (result == CopyResult::FailedEmptied) g_app.copiedUntil = 0;
    }
    RefreshPopupAndTray();
}

bool ShowsCopied() {
    return g_app.copiedUntil != 0 && GetTickCount64() < g_app.copiedUntil;
}
