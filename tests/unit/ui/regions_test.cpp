#include "ui/regions.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "store/event_log.h"
#include "support/seam.h"
#include "ui/strip_content.h"
#include "win32/platform.h"

namespace {

std::vector<std::wstring> g_logged;

struct Row {
    Region region;
    int left, top, right, bottom;
};

constexpr Row kMainRows[] = {
    {Region::WarmthTrack, 54, 107, 106, 305},  {Region::BrightnessTrack, 214, 107, 266, 305},
    {Region::GammaBanner, 22, 380, 298, 410},  {Region::PwmCard, 24, 384, 296, 418},
    {Region::DayPreset, 30, 429, 110, 465},    {Region::EveningPreset, 120, 429, 200, 465},
    {Region::NightPreset, 210, 429, 290, 465}, {Region::Power, 24, 479, 296, 527},
    {Region::Gear, 280, 17, 304, 41},
};

constexpr Row kSettingsRows[] = {
    {Region::Close, 252, 18, 300, 42},          {Region::LaunchRow, 24, 132, 296, 174},
    {Region::ExtremeDimRow, 24, 182, 296, 224}, {Region::LegacyRow, 24, 232, 296, 274},
    {Region::Support, 24, 462, 296, 516},
};

void ShowBanner() {
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = true;
}

// Rejected ramps although the machine was started after the fix: 1970 is before any start.
void ShowDemotedBanner() {
    ShowBanner();
    g_app.gammaRangeExpanded = true;
    g_app.gammaFixEpoch = 1;
}

void ShowCard() {
    g_app.pwmTargetsPresent = true;
}

// The first row in order that contains the point and is not excluded.
Region FirstIn(const std::vector<Row>& rows, int x, int y) {
    for (const Row& row : rows) {
        if (row.left <= x && x <= row.right - 1 && row.top <= y && y <= row.bottom - 1) return row.region;
    }
    return Region::None;
}

std::vector<Row> MainRowsWithout(std::initializer_list<Region> absent) {
    std::vector<Row> rows;
    for (const Row& row : kMainRows) {
        bool kept = true;
        for (Region region : absent)
            kept = kept && region != row.region;
        if (kept) rows.push_back(row);
    }
    return rows;
}

// Every point of the canvas and a margin around it.
void ExpectRegionsEverywhere(const std::vector<Row>& rows) {
    int different = 0;
    for (int y = -4; y < 545; ++y) {
        for (int x = -4; x < 325; ++x) {
            const Region expected = FirstIn(rows, x, y);
            const Region actual = HitTest(x, y);
            if (actual == expected) continue;
            if (++different <= 5) {
                ADD_FAILURE() << "at (" << x << "," << y << "): expected region "
                              << static_cast<int>(expected) << ", got " << static_cast<int>(actual);
            }
        }
    }
    EXPECT_EQ(different, 0);
}

void ExpectEdges(const Row& row) {
    const int x = (row.left + row.right) / 2;
    const int y = (row.top + row.bottom) / 2;
    EXPECT_EQ(HitTest(row.left, y), row.region) << "left edge is inside";
    EXPECT_EQ(HitTest(row.left - 1, y), Region::None);
    EXPECT_EQ(HitTest(row.right - 1, y), row.region);
    EXPECT_EQ(HitTest(row.right, y), Region::None) << "right edge is outside";
    EXPECT_EQ(HitTest(x, row.top), row.region) << "top edge is inside";
    EXPECT_EQ(HitTest(x, row.top - 1), Region::None);
    EXPECT_EQ(HitTest(x, row.bottom - 1), row.region);
    EXPECT_EQ(HitTest(x, row.bottom), Region::None) << "bottom edge is outside";
    EXPECT_EQ(HitTest(row.left, row.top), row.region);
    EXPECT_EQ(HitTest(row.right, row.bottom), Region::None);
}

class Regions : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_logged.clear();
    }
};

}  // namespace

AMBREL_REPLACE(void, LogFormatted, (const wchar_t* format, ...)) {
    g_logged.push_back(format);
}

TEST_F(Regions, EachRegionHasItsRectangle) {
    for (const auto* rows : {&kMainRows[0], &kSettingsRows[0]}) {
        const std::size_t count = rows == kMainRows ? std::size(kMainRows) : std::size(kSettingsRows);
        for (std::size_t i = 0; i < count; ++i) {
            const RECT rect = RegionRect(rows[i].region);
            SCOPED_TRACE(static_cast<int>(rows[i].region));
            EXPECT_EQ(rect.left, rows[i].left);
            EXPECT_EQ(rect.top, rows[i].top);
            EXPECT_EQ(rect.right, rows[i].right);
            EXPECT_EQ(rect.bottom, rows[i].bottom);
        }
    }
}

TEST_F(Regions, LeftAndTopEdgesAreInsideRightAndBottomOutside) {
    for (const Row& row : kMainRows) {
        SCOPED_TRACE(static_cast<int>(row.region));
        g_app = AppState{};
        if (row.region == Region::GammaBanner) ShowBanner();
        if (row.region == Region::PwmCard) ShowCard();
        ExpectEdges(row);
    }
    g_app = AppState{};
    g_app.panel = Panel::Settings;
    for (const Row& row : kSettingsRows) {
        SCOPED_TRACE(static_cast<int>(row.region));
        ExpectEdges(row);
    }
}

TEST_F(Regions, UnderTheHintNeitherBannerNorCardReacts) {
    ExpectRegionsEverywhere(MainRowsWithout({Region::GammaBanner, Region::PwmCard}));
}

TEST_F(Regions, TheCardReactsWhereItIsDrawn) {
    ShowCard();
    ExpectRegionsEverywhere(MainRowsWithout({Region::GammaBanner}));
}

TEST_F(Regions, TheBannerCoversTheStripAndTheCardDoesNotReact) {
    ShowBanner();
    ShowCard();
    g_app.pwmSafe = true;
    ExpectRegionsEverywhere(MainRowsWithout({Region::PwmCard}));
}

TEST_F(Regions, AfterADemotedBannerTheCardReactsAgain) {
    ShowDemotedBanner();
    ShowCard();
    ExpectRegionsEverywhere(MainRowsWithout({Region::GammaBanner}));
}

TEST_F(Regions, AfterADemotedBannerWithoutDisplaysNothingOfTheStripReacts) {
    ShowDemotedBanner();
    ExpectRegionsEverywhere(MainRowsWithout({Region::GammaBanner, Region::PwmCard}));
}

TEST_F(Regions, TheSettingsPanelHasItsOwnRegionsRegardlessOfTheStrip) {
    ShowBanner();
    ShowCard();
    g_app.panel = Panel::Settings;
    ExpectRegionsEverywhere({std::begin(kSettingsRows), std::end(kSettingsRows)});
}

TEST_F(Regions, APressInTheCardThatIsAlsoInTheBannerGoesToTheBanner) {
    ShowBanner();
    ShowCard();
    EXPECT_EQ(HitTest(24, 384), Region::GammaBanner);
    EXPECT_EQ(HitTest(295, 409), Region::GammaBanner);
    EXPECT_EQ(HitTest(160, 410), Region::None) << "the rest of the card, below the banner";
    EXPECT_EQ(HitTest(160, 417), Region::None);
}

TEST_F(Regions, TheCardIsPresentWithADisplayOrWithTheModeOn) {
    EXPECT_EQ(HitTest(160, 400), Region::None);
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(HitTest(160, 400), Region::PwmCard);
    g_app.pwmTargetsPresent = false;
    g_app.pwmSafe = true;
    EXPECT_EQ(HitTest(160, 400), Region::PwmCard);
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(HitTest(160, 400), Region::PwmCard);
}

TEST_F(Regions, TheBannerNeedsLegacyModeAndARejectedRamp) {
    g_app.lastApplyRejected = true;
    EXPECT_EQ(HitTest(160, 382), Region::None) << "rejected, but Legacy Mode is off";
    g_app.useLegacyGamma = true;
    EXPECT_EQ(HitTest(160, 382), Region::GammaBanner);
    g_app.lastApplyRejected = false;
    EXPECT_EQ(HitTest(160, 382), Region::None) << "Legacy Mode, but accepted";
}

TEST_F(Regions, ABannerWhoseFixAwaitsTheRestartStillReacts) {
    ShowBanner();
    g_app.gammaRangeExpanded = true;
    EXPECT_EQ(HitTest(160, 382), Region::GammaBanner) << "expanded by another program: no time recorded";
    g_app.gammaFixEpoch = 0x7FFFFFFFFFFF;
    EXPECT_EQ(HitTest(160, 382), Region::GammaBanner) << "fixed after the last start";
}

TEST_F(Regions, ExactlyOneStripIsCurrent) {
    EXPECT_EQ(CurrentStripContent(), StripContent::Hint);
    ShowCard();
    EXPECT_EQ(CurrentStripContent(), StripContent::Card);
    ShowBanner();
    EXPECT_EQ(CurrentStripContent(), StripContent::Banner);
    ShowDemotedBanner();
    EXPECT_EQ(CurrentStripContent(), StripContent::Card);
}

TEST_F(Regions, TheFirstHitTestThatFindsTheBannerDemotedLogsItOnce) {
    ShowDemotedBanner();
    CurrentStripContent();
    EXPECT_TRUE(g_logged.empty());
    CurrentStripContent();
    EXPECT_FALSE(IsAvailable(Region::GammaBanner));
    EXPECT_TRUE(g_logged.empty());
    EXPECT_EQ(HitTest(160, 390), Region::None);
    EXPECT_EQ(HitTest(160, 390), Region::None);
    const std::vector<std::wstring> expected = {
        L"Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted"};
    EXPECT_EQ(g_logged, expected);
}

TEST_F(Regions, GapsBetweenTheButtonsDoNotReact) {
    for (int x : {110, 115, 119, 200, 205, 209})
        EXPECT_EQ(HitTest(x, 447), Region::None) << x;
    for (int y : {465, 470, 478})
        EXPECT_EQ(HitTest(70, y), Region::None) << y;
}

TEST_F(Regions, CaptionValueBoxAndTheOverhangOfTheThumbAreNotTheSlider) {
    for (int x : {80, 240}) {
        EXPECT_EQ(HitTest(x, 75), Region::None) << "caption";
        EXPECT_EQ(HitTest(x, 342), Region::None) << "value box";
        EXPECT_EQ(HitTest(x, 95), Region::None) << "thumb above the travel, at value 1";
        EXPECT_EQ(HitTest(x, 315), Region::None) << "thumb below the travel, at value 0";
    }
}
