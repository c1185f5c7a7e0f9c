// The fix from the registry through settings.ini to later runs, and its effect on the banner.
#include "store/settings_fixture.h"

#include "app/shell/refresh.h"
#include "filter/gamma_banner.h"
#include "filter/gamma_fix.h"
#include "filter/gamma_range.h"
#include "filter/gamma_restart.h"
#include "support/call_record.h"
#include "support/fake_clock.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_timers);

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

using settings_fixture::g_log;

constexpr std::uint64_t kFixed = 1'800'000'000;

const std::wstring kDemoted =
    L"Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted";

class GammaFixSettings : public settings_fixture::SettingsTest {
protected:
    void SetUp() override {
        SettingsTest::SetUp();
        DeleteGammaRange();
        g_calls.clear();
        g_tick = 3'600'000;
        g_clock = kFixed;
        LoadSettings();
        g_app.mainWindow = MakeHandle<HWND>(500);
    }
    void TearDown() override {
        DeleteGammaRange();
        SettingsTest::TearDown();
    }

    static void DeleteGammaRange() {
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM",
                           L"GdiIcmGammaRange");
    }

    // Simulates a later run: reloads settings and registry, and ramps are refused.
    static void StartNextRun() {
        Reload();
        g_log.clear();
        g_app.gammaRangeExpanded = IsGammaRangeExpanded();
        g_app.useLegacyGamma = true;
        g_app.lastApplyRejected = true;
    }

    static void ConfirmTheFix() {
        EXPECT_TRUE(ExpandGammaRange());
        g_app.gammaFixPending = true;
        OnGammaFixTimer();
    }

    bool ContainsLine(const std::string& wanted) const {
        for (const std::string& line : FileLines()) {
            if (line == wanted) return true;
        }
        return false;
    }
};

}  // namespace

TEST_F(GammaFixSettings, AnExpandedRangeIsSavedWithItsTime) {
    OnGammaFixTimer();
    EXPECT_FALSE(FileExists(path)) << "nothing to confirm yet";
    ConfirmTheFix();
    EXPECT_TRUE(ContainsLine("GammaFixEpoch=1800000000"));
    EXPECT_TRUE(g_app.gammaRangeExpanded);
}

TEST_F(GammaFixSettings, BeforeTheRestartTheNextRunStillShowsTheBanner) {
    ConfirmTheFix();
    g_clock += 7'200;
    g_tick += 7'200'000;
    StartNextRun();
    EXPECT_TRUE(g_app.gammaRangeExpanded);
    EXPECT_EQ(g_app.gammaFixEpoch, kFixed);
    EXPECT_FALSE(IsRestartDoneSinceFix());
    EXPECT_TRUE(IsBannerVisible());
    EXPECT_TRUE(g_log.empty());
}

TEST_F(GammaFixSettings, AfterARestartThatDidNotHelpEveryRunWithdrawsTheBannerAndLogsItOnce) {
    ConfirmTheFix();
    g_clock += 7'200;
    g_tick = 30'000;
    for (int run = 0; run < 2; ++run) {
        StartNextRun();
        EXPECT_TRUE(IsRestartDoneSinceFix());
        EXPECT_FALSE(IsBannerVisible());
        LogBannerDemotionOnce();
        LogBannerDemotionOnce();
        EXPECT_EQ(g_log, (std::vector<std::wstring>{kDemoted})) << "run " << run;
        g_clock += 86'400;
        g_tick += 86'400'000;
    }
}

TEST_F(GammaFixSettings, ARangeExpandedOutsideTheProgramKeepsAskingForARestart) {
    EXPECT_TRUE(ExpandGammaRange());
    g_tick = 30'000;
    StartNextRun();
    EXPECT_TRUE(g_app.gammaRangeExpanded);
    EXPECT_EQ(g_app.gammaFixEpoch, 0U);
    EXPECT_TRUE(IsBannerVisible());
    EXPECT_TRUE(g_log.empty());
}

TEST_F(GammaFixSettings, AFixThatWasRevertedIsOfferedAgain) {
    ConfirmTheFix();
    DeleteGammaRange();
    g_clock += 7'200;
    g_tick = 30'000;
    StartNextRun();
    EXPECT_FALSE(g_app.gammaRangeExpanded);
    EXPECT_FALSE(IsRestartDoneSinceFix());
    EXPECT_TRUE(IsBannerVisible());
}
