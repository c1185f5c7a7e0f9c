#include "ui/pwm_card_label.h"

#include <gtest/gtest.h>

#include <string>

#include "app/state/app_state.h"

namespace {

class PwmCard : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.pwmTargetsPresent = true;
        g_app.pwmTargetCount = 2;
        g_app.pwmTargetsAt100 = 2;
    }
    void TearDown() override { g_app = AppState{}; }

    static std::wstring Label() { return PwmCardLabel(); }
};

class PwmCardOn : public PwmCard {
protected:
    void SetUp() override {
        PwmCard::SetUp();
        g_app.pwmSafe = true;
    }
};

}  // namespace

TEST_F(PwmCardOn, WaitsForADisplay) {
    g_app.pwmTargetsPresent = false;
    EXPECT_EQ(Label(), L"WAITING FOR DISPLAY");
}

TEST_F(PwmCardOn, AMissingDisplayTakesPrecedence) {
    g_app.pwmTargetsPresent = false;
    g_app.pwmVerifyPending = true;
    g_app.pwmLockConfirmed = true;
    g_app.pwmRetrySlowed = true;
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Label(), L"WAITING FOR DISPLAY");
}

TEST_F(PwmCardOn, ShowsAPendingVerification) {
    g_app.pwmVerifyPending = true;
    EXPECT_EQ(Label(), L"VERIFYING 100% LOCK");
}

TEST_F(PwmCardOn, APendingVerificationTakesPrecedenceOverConfirmationAndSlowdown) {
    g_app.pwmVerifyPending = true;
    g_app.pwmLockConfirmed = true;
    g_app.pwmRetrySlowed = true;
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Label(), L"VERIFYING 100% LOCK");
}

TEST_F(PwmCardOn, ShowsThatADisplayDoesNotHoldTheLock) {
    g_app.pwmRetrySlowed = true;
    EXPECT_EQ(Label(), L"DISPLAY WON'T HOLD 100%");
}

TEST_F(PwmCardOn, ShowsTheSameForABuiltInPanelThatDoesNotHoldTheLock) {
    g_app.pwmRetrySlowed = true;
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Label(), L"DISPLAY WON'T HOLD 100%");
}

TEST_F(PwmCardOn, ShowsThatAnUnconfirmedLockIsReasserted) {
    EXPECT_EQ(Label(), L"REASSERTING 100% LOCK");
}

TEST_F(PwmCardOn, ShowsTheSameForAnUnconfirmedLockOfABuiltInPanel) {
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Label(), L"REASSERTING 100% LOCK");
}

TEST_F(PwmCardOn, ShowsAConfirmedLockOfBuiltInPanels) {
    g_app.pwmLockConfirmed = true;
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Label(), L"BUILT-IN PANEL LOCKED AT 100%");
}

TEST_F(PwmCardOn, ShowsAConfirmedLock) {
    g_app.pwmLockConfirmed = true;
    EXPECT_EQ(Label(), L"DISPLAY LOCKED AT 100%");
}

TEST_F(PwmCardOn, AConfirmedLockTakesPrecedenceOverTheSlowdown) {
    g_app.pwmLockConfirmed = true;
    g_app.pwmRetrySlowed = true;
    EXPECT_EQ(Label(), L"DISPLAY LOCKED AT 100%");
}

TEST_F(PwmCardOn, TheCountsAreNotUsed) {
    g_app.pwmLockConfirmed = true;
    g_app.pwmTargetsAt100 = 0;
    EXPECT_EQ(Label(), L"DISPLAY LOCKED AT 100%");
}

TEST_F(PwmCard, ShowsThatEveryDisplayIsAt100) {
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmCard, ShowsTheSameIfMoreTargetsAreAt100ThanThereAre) {
    g_app.pwmTargetsAt100 = 3;
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmCard, ShowsTheSameWithoutAnyDisplay) {
    g_app.pwmTargetsPresent = false;
    g_app.pwmTargetCount = 0;
    g_app.pwmTargetsAt100 = 0;
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmCard, ShowsTheSameForBuiltInPanels) {
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmCard, TheCountsAreComparedAsSignedNumbers) {
    g_app.pwmTargetCount = 0;
    g_app.pwmTargetsAt100 = -1;
    EXPECT_EQ(Label(), L"LOCK DISPLAY AT 100%");
    g_app.pwmTargetCount = -1;
    g_app.pwmTargetsAt100 = 0;
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmCard, OffersTheLockOfADimmedBuiltInPanel) {
    g_app.pwmTargetsAt100 = 1;
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Label(), L"LOCK BUILT-IN PANEL AT 100%");
}

TEST_F(PwmCard, OffersTheLockOfADimmedDisplay) {
    g_app.pwmTargetsAt100 = 1;
    EXPECT_EQ(Label(), L"LOCK DISPLAY AT 100%");
}

TEST_F(PwmCard, TheStateOfTheLockIsNotUsedWhileOff) {
    g_app.pwmTargetsAt100 = 1;
    g_app.pwmTargetsPresent = false;
    g_app.pwmVerifyPending = true;
    g_app.pwmLockConfirmed = true;
    g_app.pwmRetrySlowed = true;
    EXPECT_EQ(Label(), L"LOCK DISPLAY AT 100%");
}

TEST_F(PwmCard, ANewAppStateShowsThatEveryDisplayIsAt100) {
    g_app = AppState{};
    EXPECT_EQ(Label(), L"DISPLAY ALREADY AT 100%");
}

TEST_F(PwmCard, ReturningTheLabelChangesNothing) {
    g_app.pwmSafe = true;
    g_app.pwmTargetsAt100 = 1;
    Label();
    EXPECT_TRUE(g_app.pwmSafe);
    EXPECT_TRUE(g_app.pwmTargetsPresent);
    EXPECT_EQ(g_app.pwmTargetCount, 2);
    EXPECT_EQ(g_app.pwmTargetsAt100, 1);
    EXPECT_FALSE(g_app.pwmLockConfirmed);
    EXPECT_FALSE(g_app.pwmVerifyPending);
}
