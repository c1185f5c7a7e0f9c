// If ramps are still rejected after the restart, the banner is withdrawn. Painting or hit testing, whichever
// runs first, logs this once per run.
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/fake_clock.h"
#include "support/seam.h"
#include "ui/drawing_test.h"
#include "ui/gdi_recorder.h"
#include "ui/main_panel.h"
#include "ui/regions.h"

AMBREL_USES_SEAMS(recorded_log);

namespace {

constexpr std::uint64_t kFixed = 1'800'000'000;

const CallRecord kLoggedOnce = {
    "log: Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted"};

void Paint() {
    g_gdi.drawn.clear();
    DrawMainPanel(ScreenContext());
}

bool IsPainted(const std::string& text) {
    for (const std::string& line : g_gdi.drawn) {
        if (line.find(text) != std::string::npos) return true;
    }
    return false;
}

Region Hit() {
    return HitTest(160, 382);
}

class BannerDemotion : public DrawingTest {
protected:
    void SetUp() override {
        DrawingTest::SetUp();
        g_calls.clear();
        g_app.useLegacyGamma = true;
        g_app.lastApplyRejected = true;
        g_app.gammaRangeExpanded = true;
        g_app.gammaFixEpoch = kFixed;
        g_clock = kFixed + 600;
        g_tick = 1'200'000;
    }

    static void Restart() {
        g_clock += 60;
        g_tick = 20'000;
    }
};

}  // namespace

TEST_F(BannerDemotion, BeforeTheRestartPaintingAndHitTestShowIt) {
    Paint();
    EXPECT_TRUE(IsPainted("FIX APPLIED. RESTART YOUR COMPUTER"));
    EXPECT_EQ(Hit(), Region::GammaBanner);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(BannerDemotion, AfterTheRestartPaintingFirstLogsItOnce) {
    Restart();
    Paint();
    EXPECT_EQ(g_calls, kLoggedOnce);
    EXPECT_TRUE(IsPainted("FOR LOWEST FLICKER"));
    EXPECT_FALSE(IsPainted("RESTART YOUR COMPUTER"));
    EXPECT_EQ(Hit(), Region::None);
    Paint();
    EXPECT_EQ(g_calls, kLoggedOnce);
}

TEST_F(BannerDemotion, AfterTheRestartAHitTestFirstLogsItOnce) {
    Restart();
    EXPECT_EQ(Hit(), Region::None);
    EXPECT_EQ(g_calls, kLoggedOnce);
    Paint();
    EXPECT_FALSE(IsPainted("RESTART YOUR COMPUTER"));
    EXPECT_EQ(Hit(), Region::None);
    EXPECT_EQ(g_calls, kLoggedOnce);
}

TEST_F(BannerDemotion, AnInterveningAcceptedRampDoesNotRepeatTheLine) {
    Restart();
    Paint();
    g_app.lastApplyRejected = false;
    Paint();
    Hit();
    g_app.lastApplyRejected = true;
    Paint();
    Hit();
    EXPECT_EQ(g_calls, kLoggedOnce);
    EXPECT_TRUE(g_app.bannerDemotedLogged);
}

TEST_F(BannerDemotion, WithAcceptedRampsNothingIsLogged) {
    Restart();
    g_app.lastApplyRejected = false;
    Paint();
    Hit();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(BannerDemotion, AHitTestOutsideTheBannerDoesNotLogIt) {
    Restart();
    HitTest(160, 503);
    EXPECT_TRUE(g_calls.empty());
    EXPECT_FALSE(g_app.bannerDemotedLogged);
}

TEST_F(BannerDemotion, TheClockSetBackByADayKeepsTheBanner) {
    Restart();
    g_clock -= 86'400;
    Paint();
    EXPECT_TRUE(IsPainted("FIX APPLIED. RESTART YOUR COMPUTER"));
    EXPECT_EQ(Hit(), Region::GammaBanner);
    EXPECT_TRUE(g_calls.empty());
}
