#include "app/sent_message.h"

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

namespace {

DWORD g_sending = ISMEX_NOSEND;
BOOL g_enabled = TRUE;
HWND const kWindow = MakeHandle<HWND>(500);

DWORD WINAPI FakeInSendMessageEx(void*) {
    return g_sending;
}

BOOL WINAPI FakeIsWindowEnabled(HWND window) {
    EXPECT_EQ(window, kWindow);
    return g_enabled;
}

class SentMessage : public testing::TestWithParam<DWORD> {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_sending = GetParam();
        g_enabled = TRUE;
    }
};

}  // namespace

AMBREL_SEAM(InSendMessageEx, FakeInSendMessageEx);
AMBREL_SEAM(IsWindowEnabled, FakeIsWindowEnabled);

TEST_P(SentMessage, IsPostedAgain) {
    EXPECT_TRUE(ShouldPostAgain());
}

TEST_P(SentMessage, IsNotPostedAgainIfItWasPosted) {
    g_sending = ISMEX_NOSEND;
    EXPECT_FALSE(ShouldPostAgain());
}

// Inside a message box that a sent message has opened, a posted message arrives as if it had been sent.
TEST_P(SentMessage, IsNotPostedAgainWhileABoxOfTheWindowIsOpen) {
    g_enabled = FALSE;
    EXPECT_FALSE(ShouldPostAgain());
}

TEST_P(SentMessage, IsNotPostedAgainWhileABoxWithoutAnOwnerIsOpen) {
    g_app.openNoticeBoxes = 1;
    EXPECT_FALSE(ShouldPostAgain());
}

INSTANTIATE_TEST_SUITE_P(Senders, SentMessage,
                         testing::Values(ISMEX_SEND, ISMEX_NOTIFY, ISMEX_CALLBACK,
                                         ISMEX_SEND | ISMEX_REPLIED));
