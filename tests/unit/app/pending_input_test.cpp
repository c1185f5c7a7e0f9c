#include "app/pending_input.h"

#include <gtest/gtest.h>

#include <deque>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

namespace {

HWND const kWindow = MakeHandle<HWND>(500);

std::deque<UINT> g_queue;
bool g_mouseNeverStops = false;
void (*g_duringPeek)() = nullptr;
void (*g_duringDispatch)() = nullptr;

BOOL WINAPI FakePeekMessage(MSG* message, HWND window, UINT first, UINT last, UINT flags) {
    EXPECT_EQ(window, kWindow);
    EXPECT_EQ(first, 0x200U);  // WM_MOUSEFIRST
    EXPECT_EQ(last, 0x20EU);   // WM_MOUSELAST
    EXPECT_EQ(flags, 1U);      // PM_REMOVE
    if (g_duringPeek != nullptr) g_duringPeek();
    if (g_mouseNeverStops) g_queue = {WM_MOUSEMOVE};
    if (g_queue.empty()) return FALSE;
    message->hwnd = window;
    message->message = g_queue.front();
    message->wParam = 3;
    g_queue.pop_front();
    return TRUE;
}

LRESULT WINAPI FakeDispatchMessage(const MSG* message) {
    EXPECT_EQ(message->hwnd, kWindow);
    Record("dispatch ", message->message);
    if (g_duringDispatch != nullptr) g_duringDispatch();
    return 0;
}

void WINAPI FakePostQuitMessage(int code) {
    Record("post quit ", code);
}

class PendingInput : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_calls.clear();
        g_queue.clear();
        g_mouseNeverStops = false;
        g_duringPeek = nullptr;
        g_duringDispatch = nullptr;
    }
};

}  // namespace

AMBREL_SEAM(PeekMessageW, FakePeekMessage);
AMBREL_SEAM(DispatchMessageW, FakeDispatchMessage);
AMBREL_SEAM(PostQuitMessage, FakePostQuitMessage);

TEST_F(PendingInput, IsDispatchedInOrderUntilNoneIsLeft) {
    g_queue = {WM_LBUTTONUP, WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP};
    HandlePendingPopupInput();
    EXPECT_EQ(g_calls, (CallRecord{"dispatch 514", "dispatch 512", "dispatch 513", "dispatch 514"}));
}

TEST_F(PendingInput, NothingIsDispatchedWhenTheQueueIsEmpty) {
    HandlePendingPopupInput();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PendingInput, AtMostAHundredMessagesAreDispatched) {
    g_mouseNeverStops = true;
    HandlePendingPopupInput();
    EXPECT_EQ(g_calls.size(), 100U);
}

// With a null window PeekMessage would retrieve the input of message boxes.
TEST_F(PendingInput, StopsWhenAHandlerDestroysTheWindow) {
    g_queue = {WM_LBUTTONDOWN, WM_LBUTTONUP};
    g_duringDispatch = [] { g_app.mainWindow = nullptr; };
    HandlePendingPopupInput();
    EXPECT_EQ(g_calls, (CallRecord{"dispatch 513"}));
}

TEST_F(PendingInput, StopsWhenASentMessageDestroysTheWindow) {
    g_duringPeek = [] { g_app.mainWindow = nullptr; };
    HandlePendingPopupInput();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PendingInput, NothingIsDispatchedWithoutAWindow) {
    g_app.mainWindow = nullptr;
    g_duringPeek = [] { Record("peek"); };
    HandlePendingPopupInput();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(PendingInput, AQuitMessageIsPostedAgainForTheMessageLoop) {
    g_queue = {WM_QUIT, WM_LBUTTONUP};
    HandlePendingPopupInput();
    EXPECT_EQ(g_calls, (CallRecord{"post quit 3"}));
}
