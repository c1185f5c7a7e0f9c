// Copying by the support button: every call in order, and every failure.
#include "ui/support_copy.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "diag/support_bundle.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_timers);
AMBREL_USES_SEAMS(recorded_log);

namespace {

HWND const kPopup = MakeHandle<HWND>(500);
HGLOBAL const kBlock = MakeHandle<HGLOBAL>(900);

std::wstring g_text;
std::uint64_t g_tick = 0;
ULONGLONG g_buildDuration = 0;
bool g_clipboardOpens = true;
bool g_clipboardEmpties = true;
bool g_allocates = true;
bool g_locks = true;
bool g_clipboardAccepts = true;
bool g_hasMemory = true;
std::vector<wchar_t> g_memory;  // the block's

BOOL WINAPI FakeOpenClipboard(HWND owner) {
    Record("open clipboard ", ValueOf(owner));
    return g_clipboardOpens;
}

BOOL WINAPI FakeEmptyClipboard() {
    Record("empty clipboard");
    return g_clipboardEmpties;
}

BOOL WINAPI FakeCloseClipboard() {
    Record("close clipboard");
    return TRUE;
}

HGLOBAL WINAPI FakeGlobalAlloc(UINT flags, SIZE_T bytes) {
    Record("allocate ", bytes, flags == 2 ? " movable" : " OF ANOTHER KIND");
    if (!g_allocates) return nullptr;
    // A block initially contains arbitrary data.
    g_memory.assign(bytes / sizeof(wchar_t), L'#');
    return kBlock;
}

void* WINAPI FakeGlobalLock(HGLOBAL block) {
    EXPECT_EQ(block, kBlock);
    Record("lock");
    return g_locks ? g_memory.data() : nullptr;
}

BOOL WINAPI FakeGlobalUnlock(HGLOBAL block) {
    EXPECT_EQ(block, kBlock);
    Record("unlock");
    return FALSE;  // no longer locked
}

HGLOBAL WINAPI FakeGlobalFree(HGLOBAL block) {
    EXPECT_EQ(block, kBlock);
    Record("free");
    return nullptr;
}

// For the memory that a report needs.
void* WINAPI FakeVirtualAlloc(void* address, SIZE_T bytes, DWORD type, DWORD protection) {
    EXPECT_EQ(bytes, SIZE_T{8} << 20);
    EXPECT_EQ(type, DWORD{MEM_RESERVE | MEM_COMMIT});
    return g_hasMemory ? Real(&VirtualAlloc)(address, bytes, type, protection) : nullptr;
}

HANDLE WINAPI FakeSetClipboardData(UINT format, HANDLE block) {
    EXPECT_EQ(block, kBlock);
    Record("hand over as format ", format);
    return g_clipboardAccepts ? block : nullptr;
}

ULONGLONG WINAPI FakeGetTickCount64() {
    return g_tick;
}

class SupportCopy : public testing::Test {
protected:
    void SetUp() override {
        g_calls.clear();
        g_app = AppState{};
        g_app.mainWindow = kPopup;
        g_text = L"report";
        g_tick = 1000000;
        g_buildDuration = 0;
        g_clipboardOpens = g_clipboardEmpties = g_allocates = g_locks = g_clipboardAccepts = g_hasMemory =
            true;
        g_memory.clear();
    }

    void TearDown() override { g_app = AppState{}; }

    static std::wstring ClipboardText() { return {g_memory.begin(), g_memory.end()}; }

    static bool Did(const std::string& call) {
        return std::find(g_calls.begin(), g_calls.end(), call) != g_calls.end();
    }
};

// The result of every failed copy.
const std::string kFailed = "log: Support bundle copy failed";

}  // namespace

AMBREL_SEAM(OpenClipboard, FakeOpenClipboard);
AMBREL_SEAM(EmptyClipboard, FakeEmptyClipboard);
AMBREL_SEAM(CloseClipboard, FakeCloseClipboard);
AMBREL_SEAM(SetClipboardData, FakeSetClipboardData);
AMBREL_SEAM(GlobalAlloc, FakeGlobalAlloc);
AMBREL_SEAM(GlobalLock, FakeGlobalLock);
AMBREL_SEAM(GlobalUnlock, FakeGlobalUnlock);
AMBREL_SEAM(GlobalFree, FakeGlobalFree);
AMBREL_SEAM(GetTickCount64, FakeGetTickCount64);
AMBREL_SEAM(VirtualAlloc, FakeVirtualAlloc);

AMBREL_REPLACE(std::wstring, BuildSupportBundle, ()) {
    Record("build report");
    g_tick += g_buildDuration;
    return g_text;
}

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

TEST_F(SupportCopy, CopiesTheReportToTheClipboardAndLeaksNothing) {
    CopySupportBundle();
    EXPECT_EQ(g_calls, (CallRecord{"build report", "open clipboard 500", "empty clipboard",
                                   "allocate 14 movable", "lock", "unlock", "hand over as format 13",
                                   "close clipboard", "log: Support bundle copied to clipboard (6 chars)",
                                   "set timer 3 5100", "refresh"}));
    EXPECT_EQ(ClipboardText(), std::wstring(L"report\0", 7));
}

TEST_F(SupportCopy, WithoutMemoryForTheReportNothingIsBuiltAndTheClipboardIsLeftAlone) {
    g_hasMemory = false;
    CopySupportBundle();
    EXPECT_EQ(g_calls, (CallRecord{kFailed, "refresh"}));
}

TEST_F(SupportCopy, ShowsTheCopiedIndicationForFiveSeconds) {
    CopySupportBundle();
    EXPECT_EQ(g_app.copiedUntil, 1005000u);
}

TEST_F(SupportCopy, ASecondCopyWithinFiveSecondsExtendsTheIndication) {
    CopySupportBundle();
    g_tick = 1004999;
    g_calls.clear();
    CopySupportBundle();
    EXPECT_EQ(g_app.copiedUntil, 1009999u);
    EXPECT_TRUE(Did("set timer 3 5100"));
    EXPECT_TRUE(Did("refresh"));
}

// Slow displays delay the report; the indication lasts five seconds from the copy.
TEST_F(SupportCopy, TheTimeThatTheReportTakesDoesNotShortenTheIndication) {
    g_buildDuration = 3500;
    CopySupportBundle();
    EXPECT_EQ(g_app.copiedUntil, 1008500u);
}

TEST_F(SupportCopy, TheTimeToShowItHas64Bits) {
    g_tick = 4294967295;
    CopySupportBundle();
    EXPECT_EQ(g_app.copiedUntil, 4294972295u);
}

TEST_F(SupportCopy, TheLengthIsCountedInUtf16Units) {
    g_text = L"\U0001F319\u00e9!";  // a moon of two units, and two more
    CopySupportBundle();
    EXPECT_TRUE(Did("allocate 10 movable"));
    EXPECT_TRUE(Did("log: Support bundle copied to clipboard (4 chars)"));
    EXPECT_EQ(ClipboardText(), g_text + L'\0');
}

TEST_F(SupportCopy, ALongReportIsCopiedCompletely) {
    g_text = std::wstring(250000, L'x') + L"END\r\n";
    CopySupportBundle();
    EXPECT_TRUE(Did("allocate 500012 movable"));
    EXPECT_TRUE(Did("log: Support bundle copied to clipboard (250005 chars)"));
    EXPECT_EQ(ClipboardText(), g_text + L'\0');
}

TEST_F(SupportCopy, WithTheClipboardHeldByAnotherProgramNothingIsEmptiedAllocatedOrClosed) {
    g_clipboardOpens = false;
    CopySupportBundle();
    EXPECT_EQ(g_calls, (CallRecord{"build report", "open clipboard 500", kFailed, "refresh"}));
    EXPECT_EQ(g_app.copiedUntil, 0u);
}

TEST_F(SupportCopy, WithoutMemoryTheClipboardIsClosed) {
    g_allocates = false;
    CopySupportBundle();
    EXPECT_EQ(g_calls, (CallRecord{"build report", "open clipboard 500", "empty clipboard",
                                   "allocate 14 movable", "close clipboard", kFailed, "refresh"}));
    EXPECT_EQ(g_app.copiedUntil, 0u);
}

TEST_F(SupportCopy, ABlockThatCannotBeLockedIsFreed) {
    g_locks = false;
    CopySupportBundle();
    EXPECT_EQ(g_calls,
              (CallRecord{"build report", "open clipboard 500", "empty clipboard", "allocate 14 movable",
                          "lock", "free", "close clipboard", kFailed, "refresh"}));
    EXPECT_EQ(g_app.copiedUntil, 0u);
}

TEST_F(SupportCopy, ABlockThatTheClipboardRefusesIsFreed) {
    g_clipboardAccepts = false;
    CopySupportBundle();
    EXPECT_EQ(g_calls, (CallRecord{"build report", "open clipboard 500", "empty clipboard",
                                   "allocate 14 movable", "lock", "unlock", "hand over as format 13", "free",
                                   "close clipboard", kFailed, "refresh"}));
    EXPECT_EQ(g_app.copiedUntil, 0u);
}

TEST_F(SupportCopy, AClipboardThatCannotBeEmptiedMayStillTakeTheReport) {
    g_clipboardEmpties = false;
    CopySupportBundle();
    EXPECT_TRUE(Did("log: Support bundle copied to clipboard (6 chars)"));
    EXPECT_FALSE(Did("free"));
    EXPECT_EQ(g_app.copiedUntil, 1005000u);
}

TEST_F(SupportCopy, AFailureSoonAfterACopyEndsTheIndication) {
    CopySupportBundle();
    g_tick += 1000;
    g_clipboardAccepts = false;
    g_calls.clear();
    CopySupportBundle();
    EXPECT_EQ(g_app.copiedUntil, 0u);
    EXPECT_FALSE(Did("set timer 3 5100"));
    EXPECT_TRUE(Did(kFailed));
}

// What was copied can still be pasted.
TEST_F(SupportCopy, AClipboardThatDoesNotOpenKeepsTheIndicationOfAnEarlierCopy) {
    CopySupportBundle();
    g_tick += 1000;
    g_clipboardOpens = false;
    g_calls.clear();
    CopySupportBundle();
    EXPECT_EQ(g_app.copiedUntil, 1005000u);
    EXPECT_TRUE(Did(kFailed));
    EXPECT_FALSE(Did("set timer 3 5100"));
    EXPECT_FALSE(Did("kill timer 3"));
}

TEST_F(SupportCopy, AFailureWithAClipboardThatWasNotEmptiedKeepsTheIndicationOfAnEarlierCopy) {
    CopySupportBundle();
    g_clipboardEmpties = false;
    g_allocates = false;
    CopySupportBundle();
    EXPECT_EQ(g_app.copiedUntil, 1005000u);
}

TEST_F(SupportCopy, AnyFailureAfterTheClipboardWasEmptiedEndsTheIndication) {
    for (bool* step : {&g_allocates, &g_locks, &g_clipboardAccepts}) {
        CopySupportBundle();
        EXPECT_EQ(g_app.copiedUntil, 1005000u);
        *step = false;
        CopySupportBundle();
        EXPECT_EQ(g_app.copiedUntil, 0u);
        *step = true;
    }
}

TEST_F(SupportCopy, ACopyAfterAFailureSucceeds) {
    g_clipboardOpens = false;
    CopySupportBundle();
    g_clipboardOpens = true;
    g_calls.clear();
    CopySupportBundle();
    EXPECT_TRUE(Did("log: Support bundle copied to clipboard (6 chars)"));
    EXPECT_EQ(g_app.copiedUntil, 1005000u);
}
