#include "ui/status_strip.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "store/event_log.h"
#include "support/seam.h"
#include "ui/drawing_test.h"
#include "ui/expected_drawing.h"
#include "ui/gdi_recorder.h"

namespace {

std::vector<std::wstring> g_logged;

constexpr std::uint32_t kAmber = 0xFFD200;
constexpr std::uint32_t kGreen = 0x00D67C;
constexpr std::uint32_t kGrey = 0x6E6E6E;

struct Card {
    std::uint32_t accent;
    std::uint32_t top;
    std::uint32_t bottom;
    bool on;
    std::string label;
};

Drawing CardDrawing(const Card& card, std::uint32_t dpi = 96) {
    const Rect rect = {24, 384, 296, 418};
    return RoundedGradient(rect, 8, card.top, card.bottom, dpi) +
           Drawing{Stroke({32, 385, 288, 385}, 1, card.on ? 0x787878 : 0x505050),
                   Stroke({32, 416, 288, 416}, 1, 0x000000),
                   Outline(rect, 16, card.accent),
                   Text("PWM-SAFE MODE", "Label", 0xFFFFFF, {36, 387, 226, 402}, kLeft),
                   Text(card.label, "Small", card.accent, {36, 400, 226, 414}, kLeft),
                   Text(card.on ? "ON" : "OFF", "Label", card.on ? 0xFFFFFF : 0x666666, {234, 384, 284, 418},
                        kRight)};
}

Card Warning(bool on, const std::string& label) {
    return {kAmber, 0x1C180C, 0x120F08, on, label};
}
Card Neutral(const std::string& label) {
    return {kGrey, 0x161616, 0x0C0C0C, false, label};
}
Card Locked(const std::string& label) {
    return {kGreen, 0x122016, 0x0A140E, true, label};
}

constexpr Rect kStripText = {22, 385, 298, 405};
const std::string kHint = "\\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%";
const std::string kBlocked = "\\u26a0 COLORS BLOCKED BY WINDOWS. CLICK TO FIX";
const std::string kRestart = "\\u26a0 FIX APPLIED. RESTART YOUR COMPUTER";

class StatusStripDrawing : public DrawingTest {
protected:
    void SetUp() override {
        DrawingTest::SetUp();
        g_logged.clear();
    }

    static Drawing Drawn() {
        g_gdi.drawn.clear();
        DrawStatusStrip(ScreenContext());
        return g_gdi.drawn;
    }

    static void RejectLegacyRamps() {
        g_app.useLegacyGamma = true;
        g_app.lastApplyRejected = true;
    }
};

Drawing TextLine(const std::string& text, std::uint32_t colour) {
    return {Text(text, "Small", colour, kStripText, kTopCentre)};
}

}  // namespace

AMBREL_REPLACE(void, LogFormatted, (const wchar_t* format, ...)) {
    g_logged.push_back(format);
}

TEST_F(StatusStripDrawing, TheHintLightsUpBelowNineTenths) {
    g_app.brightness = 1.0;
    EXPECT_EQ(Drawn(), TextLine(kHint, 0x1E1E1E));
    g_app.brightness = 0.9;
    EXPECT_EQ(Drawn(), TextLine(kHint, 0x1E1E1E));
    g_app.brightness = 0.8999;
    EXPECT_EQ(Drawn(), TextLine(kHint, kAmber));
    g_app.brightness = 0.0;
    EXPECT_EQ(Drawn(), TextLine(kHint, kAmber));
}

TEST_F(StatusStripDrawing, TheBannerAsksForAClickOrForARestart) {
    RejectLegacyRamps();
    EXPECT_EQ(Drawn(), TextLine(kBlocked, 0xFF0000));
    g_app.gammaRangeExpanded = true;
    EXPECT_EQ(Drawn(), TextLine(kRestart, 0xFF0000));
    g_app.gammaFixEpoch = 0x7FFFFFFFFFFF;
    EXPECT_EQ(Drawn(), TextLine(kRestart, 0xFF0000)) << "fixed after the last start";
    EXPECT_TRUE(g_logged.empty());
}

TEST_F(StatusStripDrawing, AFixTimeWithoutTheFixAsksForTheClick) {
    RejectLegacyRamps();
    g_app.gammaFixEpoch = 1;
    EXPECT_EQ(Drawn(), TextLine(kBlocked, 0xFF0000));
}

TEST_F(StatusStripDrawing, TheBannerBeatsTheCard) {
    RejectLegacyRamps();
    g_app.pwmSafe = true;
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(Drawn(), TextLine(kBlocked, 0xFF0000));
}

TEST_F(StatusStripDrawing, WithLegacyModeOffRejectedRampsNeverShowTheBanner) {
    g_app.lastApplyRejected = true;
    EXPECT_EQ(Drawn(), TextLine(kHint, 0x1E1E1E));
    g_app.gammaRangeExpanded = true;
    EXPECT_EQ(Drawn(), TextLine(kHint, 0x1E1E1E));
    g_app.gammaFixEpoch = 1;
    EXPECT_EQ(Drawn(), TextLine(kHint, 0x1E1E1E));
    EXPECT_TRUE(g_logged.empty());
}

TEST_F(StatusStripDrawing, ABannerThatOutlivedTheRestartIsReplacedAndLoggedOnce) {
    RejectLegacyRamps();
    g_app.gammaRangeExpanded = true;
    g_app.gammaFixEpoch = 1;
    EXPECT_EQ(Drawn(), TextLine(kHint, 0x1E1E1E));
    EXPECT_EQ(Drawn(), TextLine(kHint, 0x1E1E1E));
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(Drawn(), CardDrawing(Neutral("DISPLAY ALREADY AT 100%")));
    const std::vector<std::wstring> expected = {
        L"Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted"};
    EXPECT_EQ(g_logged, expected);
    EXPECT_TRUE(g_app.bannerDemotedLogged);
}

TEST_F(StatusStripDrawing, TheDemotedMarkIsKeptForTheRun) {
    RejectLegacyRamps();
    g_app.gammaRangeExpanded = true;
    g_app.gammaFixEpoch = 1;
    Drawn();
    g_app.lastApplyRejected = false;
    Drawn();
    g_app.lastApplyRejected = true;
    Drawn();
    EXPECT_TRUE(g_app.bannerDemotedLogged);
    EXPECT_EQ(g_logged.size(), 1U);
}

TEST_F(StatusStripDrawing, WithTheModeOffTheCardWarnsWhileADisplayIsBelow100) {
    g_app.pwmTargetsPresent = true;
    g_app.pwmTargetCount = 2;
    g_app.pwmTargetsAt100 = 1;
    EXPECT_EQ(Drawn(), CardDrawing(Warning(false, "LOCK DISPLAY AT 100%")));
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Drawn(), CardDrawing(Warning(false, "LOCK BUILT-IN PANEL AT 100%")));
}

TEST_F(StatusStripDrawing, WithTheModeOffAndAllDisplaysAt100TheCardIsNeutral) {
    g_app.pwmTargetsPresent = true;
    g_app.pwmTargetCount = 2;
    g_app.pwmTargetsAt100 = 2;
    EXPECT_EQ(Drawn(), CardDrawing(Neutral("DISPLAY ALREADY AT 100%")));
    g_app.pwmTargetCount = 0;
    g_app.pwmTargetsAt100 = 0;
    EXPECT_EQ(Drawn(), CardDrawing(Neutral("DISPLAY ALREADY AT 100%")));
    g_app.pwmBuiltInOnly = true;
    g_app.pwmTargetsAt100 = 1;
    EXPECT_EQ(Drawn(), CardDrawing(Neutral("DISPLAY ALREADY AT 100%")));
}

TEST_F(StatusStripDrawing, TheLockStateDoesNotColourTheCardWhileTheModeIsOff) {
    g_app.pwmTargetsPresent = true;
    g_app.pwmLockConfirmed = true;
    EXPECT_EQ(Drawn(), CardDrawing(Neutral("DISPLAY ALREADY AT 100%")));
    g_app.pwmVerifyPending = true;
    g_app.pwmRetrySlowed = true;
    g_app.pwmTargetCount = 1;
    EXPECT_EQ(Drawn(), CardDrawing(Warning(false, "LOCK DISPLAY AT 100%")));
}

TEST_F(StatusStripDrawing, WithTheModeOnAndTheLockHeldTheCardIsGreen) {
    g_app.pwmSafe = true;
    g_app.pwmTargetsPresent = true;
    g_app.pwmLockConfirmed = true;
    EXPECT_EQ(Drawn(), CardDrawing(Locked("DISPLAY LOCKED AT 100%")));
    g_app.pwmBuiltInOnly = true;
    EXPECT_EQ(Drawn(), CardDrawing(Locked("BUILT-IN PANEL LOCKED AT 100%")));
    g_app.pwmVerifyPending = true;
    EXPECT_EQ(Drawn(), CardDrawing(Locked("VERIFYING 100% LOCK")));
    g_app.pwmTargetsPresent = false;
    EXPECT_EQ(Drawn(), CardDrawing(Locked("WAITING FOR DISPLAY")));
}

TEST_F(StatusStripDrawing, WithTheModeOnAndTheLockNotHeldTheCardWarns) {
    g_app.pwmSafe = true;
    EXPECT_EQ(Drawn(), CardDrawing(Warning(true, "WAITING FOR DISPLAY")));
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(Drawn(), CardDrawing(Warning(true, "REASSERTING 100% LOCK")));
    g_app.pwmRetrySlowed = true;
    EXPECT_EQ(Drawn(), CardDrawing(Warning(true, "DISPLAY WON'T HOLD 100%")));
    g_app.pwmVerifyPending = true;
    EXPECT_EQ(Drawn(), CardDrawing(Warning(true, "VERIFYING 100% LOCK")));
}

TEST_F(StatusStripDrawing, WithTheModeOnTheCountsOfDisplaysDoNotColourTheCard) {
    g_app.pwmSafe = true;
    g_app.pwmTargetsPresent = true;
    g_app.pwmLockConfirmed = true;
    g_app.pwmTargetCount = 3;
    EXPECT_EQ(Drawn(), CardDrawing(Locked("DISPLAY LOCKED AT 100%")));
    g_app.pwmLockConfirmed = false;
    g_app.pwmTargetsAt100 = 3;
    EXPECT_EQ(Drawn(), CardDrawing(Warning(true, "REASSERTING 100% LOCK")));
}

TEST_F(StatusStripDrawing, TheCardsClipFollowsTheDpi) {
    g_app.pwmTargetsPresent = true;
    for (std::uint32_t dpi : {96U, 120U, 144U, 192U, 0U}) {
        g_app.dpi = dpi;
        EXPECT_EQ(Drawn(), CardDrawing(Neutral("DISPLAY ALREADY AT 100%"), dpi)) << dpi;
    }
}

TEST_F(StatusStripDrawing, TheFilterDoesNotChangeTheStrip) {
    g_app.filterOn = true;
    EXPECT_EQ(Drawn(), TextLine(kHint, 0x1E1E1E));
    RejectLegacyRamps();
    EXPECT_EQ(Drawn(), TextLine(kBlocked, 0xFF0000));
    g_app.filterOn = false;
    EXPECT_EQ(Drawn(), TextLine(kBlocked, 0xFF0000));
}
