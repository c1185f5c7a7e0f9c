#include "app/accessibility.h"

#include <gtest/gtest.h>

#include "app/sent_message.h"
#include "app/session_end.h"
#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "ui/accessible_actions.h"
#include "ui/accessible_host.h"

namespace {

constexpr LRESULT kObject = 4321;
constexpr LRESULT kDefaultAnswer = 4711;

LRESULT g_answer = kObject;
bool g_sent = false;

BOOL WINAPI FakePostMessage(HWND window, UINT message, WPARAM, LPARAM) {
    Record("post ", ValueOf(window), " ", message);
    return TRUE;
}

LRESULT WINAPI FakeDefWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Record("default ", ValueOf(window), " ", message, " ", wParam, " ", lParam);
    return kDefaultAnswer;
}

LRESULT Get(LPARAM objectId) {
    return OnGetObject(MakeHandle<HWND>(500), 7, objectId);
}

class Accessibility : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_answer = kObject;
        g_sent = false;
        g_calls.clear();
    }
};

}  // namespace

AMBREL_SEAM(DefWindowProcW, FakeDefWindowProc);
AMBREL_SEAM(PostMessageW, FakePostMessage);

AMBREL_REPLACE(bool, ShouldPostAgain, ()) {
    return g_sent;
}
AMBREL_REPLACE(LRESULT, AnswerAccessibilityRequest, (WPARAM wParam)) {
    Record("answer ", wParam);
    return g_answer;
}
AMBREL_REPLACE(void, ContinueSession, ()) {
    Record("continue session");
}
AMBREL_REPLACE(void, PerformAccessibleActions, ()) {
    Record("perform");
}

TEST_F(Accessibility, TheClientAreaIsOursWhetherOrNotItsIdIsSignExtended) {
    EXPECT_EQ(Get(-4), kObject);
    EXPECT_EQ(Get(0xFFFFFFFC), kObject);
    EXPECT_EQ(g_calls, (CallRecord{"answer 7", "answer 7"}));
}

TEST_F(Accessibility, EverythingElseIsAnsweredByWindows) {
    // The window, the menu bar, the caret, UI Automation's root, a custom object.
    for (const LPARAM id : {LPARAM{0}, LPARAM{-3}, LPARAM{-8}, LPARAM{-25}, LPARAM{4}, LPARAM{0x7FFFFFFC}})
        EXPECT_EQ(Get(id), kDefaultAnswer) << id;
    EXPECT_EQ(g_calls.size(), 6U);
    EXPECT_EQ(g_calls[1], "default 500 61 7 -3");
}

TEST_F(Accessibility, WithoutAnObjectWindowsAnswersForTheClientAreaToo) {
    g_answer = 0;
    EXPECT_EQ(Get(-4), kDefaultAnswer);
    EXPECT_EQ(g_calls, (CallRecord{"answer 7", "default 500 61 7 -4"}));
}

TEST_F(Accessibility, ARequestIsUseOfTheProgramLikeAClick) {
    g_app.accessibleActions.count = 1;
    OnAccessibleActions();
    EXPECT_EQ(g_calls, (CallRecord{"continue session", "perform"}));
}

TEST_F(Accessibility, AMessageThatWasSentIsPosted) {
    g_app.mainWindow = MakeHandle<HWND>(500);
    g_app.accessibleActions.count = 1;
    g_sent = true;
    OnAccessibleActions();
    EXPECT_EQ(g_calls, (CallRecord{"post 500 32876"}));
}

TEST_F(Accessibility, TheMessageAloneDoesNothing) {
    OnAccessibleActions();
    EXPECT_EQ(g_calls, CallRecord{});
}
