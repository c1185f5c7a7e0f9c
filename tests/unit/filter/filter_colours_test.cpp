// The real warmth model through both pipelines: the values that Windows receives for given settings.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_magnification.h"
#include "filter/fake_screen.h"
#include "filter/filter.h"
#include "filter/reference_colour.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);
AMBREL_USES_SEAMS(recorded_cursors);

AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save");
}

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

class FilterColours : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_magnification = FakeMagnification{};
        g_screen = FakeScreen{};
        g_calls.clear();
        InstallFakeMagnification();
    }

    static MAGCOLOREFFECT AppliedMatrix(double intensity, double brightness) {
        g_app.intensity = intensity;
        g_app.brightness = brightness;
        g_app.useLegacyGamma = false;
        g_magnification.seen.clear();
        ApplyFilter();
        EXPECT_EQ(g_magnification.seen.size(), 1U);
        return g_magnification.seen.empty() ? MAGCOLOREFFECT{} : g_magnification.seen.front();
    }

    static Ramp AppliedRamp(double intensity, double brightness) {
        g_app.intensity = intensity;
        g_app.brightness = brightness;
        g_app.useLegacyGamma = true;
        g_screen.seen.clear();
        ApplyFilter();
        EXPECT_EQ(g_screen.seen.size(), 1U);
        return g_screen.seen.empty() ? Ramp{} : g_screen.seen.front();
    }

    // Compares with the published values, which have four decimals.
    static void ExpectDiagonal(double intensity, double brightness, double red, double green, double blue) {
        const MAGCOLOREFFECT effect = AppliedMatrix(intensity, brightness);
        EXPECT_NEAR(effect.transform[0][0], red * brightness, 0.00005);
        EXPECT_NEAR(effect.transform[1][1], green * brightness, 0.00005);
        EXPECT_NEAR(effect.transform[2][2], blue * brightness, 0.00005);
    }
};

constexpr std::array kIntensities = {0.0,   0.01,  0.125,
                                     0.25,  0.365, 0.3846153846153846,
                                     0.385, 0.5,   0.5846153846153845,
                                     0.6,   0.65,  0.66,
                                     0.692, 0.7,   0.75,
                                     0.8,   0.9,   0.999,
                                     1.0};
constexpr std::array kBrightnesses = {1.0, 0.85, 0.7, 0.333, 0.1, 0.05};

}  // namespace

TEST_F(FilterColours, KnownWarmthsReachTheMatrixInTheirKnownColours) {
    ExpectDiagonal(0.3846153846153846, 1.0, 1.0, 0.9390, 0.5153);
    ExpectDiagonal(0.5846153846153845, 0.85, 1.0, 0.8185, 0.1865);
    ExpectDiagonal(1.0 - 2000.0 / 6500.0, 1.0, 1.0, 0.6571, 0.0194);
    ExpectDiagonal(0.9, 1.0, 1.0, 0.1631, 0.0048);
}

TEST_F(FilterColours, NoWarmthAtFullBrightnessIsExactlyTheIdentityInBothPipelines) {
    EXPECT_TRUE(IsIdentity(AppliedMatrix(0.0, 1.0)));
    const Ramp ramp = AppliedRamp(0.0, 1.0);
    for (const auto& channel : ramp.channels) {
        for (std::size_t i = 0; i < 256; ++i)
            EXPECT_EQ(channel[i], i * 257) << i;
    }
}

TEST_F(FilterColours, NightIsPureRedInBothPipelines) {
    const MAGCOLOREFFECT effect = AppliedMatrix(1.0, 0.7);
    EXPECT_EQ(effect.transform[0][0], 0.7F);
    EXPECT_EQ(effect.transform[1][1], 0.0F);
    EXPECT_EQ(effect.transform[2][2], 0.0F);
    const Ramp ramp = AppliedRamp(1.0, 0.7);
    EXPECT_EQ(ramp.channels[kRed][255], 45874);
    for (std::size_t i = 0; i < 256; ++i) {
        EXPECT_EQ(ramp.channels[kGreen][i], 0) << i;
        EXPECT_EQ(ramp.channels[kBlue][i], 0) << i;
    }
}

TEST_F(FilterColours, TheMatrixIsTheColourTimesTheBrightness) {
    for (const double intensity : kIntensities) {
        const ReferenceColour colour = ReferenceFilterColour(intensity);
        for (const double brightness : kBrightnesses) {
            const MAGCOLOREFFECT effect = AppliedMatrix(intensity, brightness);
            EXPECT_FLOAT_EQ(effect.transform[0][0], static_cast<float>(colour.red * brightness)) << intensity;
            EXPECT_FLOAT_EQ(effect.transform[1][1], static_cast<float>(colour.green * brightness))
                << intensity;
            EXPECT_FLOAT_EQ(effect.transform[2][2], static_cast<float>(colour.blue * brightness))
                << intensity;
        }
    }
}

TEST_F(FilterColours, EveryEntryOfTheRampIsTheTruncatedProduct) {
    for (const double intensity : kIntensities) {
        const ReferenceColour colour = ReferenceFilterColour(intensity);
        const std::array slopes = {colour.red, colour.green, colour.blue};
        for (const double brightness : kBrightnesses) {
            const Ramp ramp = AppliedRamp(intensity, brightness);
            for (std::size_t channel = 0; channel < 3; ++channel) {
                for (std::size_t i = 0; i < 256; ++i) {
                    const long double exact =
                        slopes[channel] * brightness * 257.0L * static_cast<long double>(i);
                    // The two computations may differ around a whole number, but not by more.
                    const long double entry = ramp.channels[channel][i];
                    EXPECT_LE(entry, exact + 1e-6L) << intensity << " " << brightness << " " << i;
                    EXPECT_GT(entry, exact - 1.0L - 1e-6L) << intensity << " " << brightness << " " << i;
                }
            }
        }
    }
}

TEST_F(FilterColours, PresetsReachTheScreenInBothPipelines) {
    ApplyPreset(FilterPreset::Evening);
    ASSERT_EQ(g_magnification.seen.size(), 1U);
    EXPECT_FLOAT_EQ(g_magnification.seen[0].transform[0][0], 0.85F);
    EXPECT_NEAR(g_magnification.seen[0].transform[1][1], 0.8185 * 0.85, 0.00005);
    g_app.useLegacyGamma = true;
    ApplyPreset(FilterPreset::Night);
    ASSERT_EQ(g_screen.seen.size(), 1U);
    EXPECT_EQ(g_screen.seen[0].channels[kRed][255], 45874);
}

TEST_F(FilterColours, TogglingLeavesOnlyOnePipelineColoured) {
    g_app.intensity = 0.6;
    ToggleLegacyMode();
    ASSERT_EQ(g_magnification.seen.size(), 1U);
    EXPECT_TRUE(IsIdentity(g_magnification.seen[0]));
    ASSERT_EQ(g_screen.seen.size(), 1U);
    EXPECT_LT(g_screen.seen[0].channels[kBlue][255], 20000);

    ToggleLegacyMode();
    ASSERT_EQ(g_screen.seen.size(), 2U);
    EXPECT_EQ(g_screen.seen[1].channels[kBlue][255], 65535);
    ASSERT_EQ(g_magnification.seen.size(), 2U);
    EXPECT_FALSE(IsIdentity(g_magnification.seen[1]));
}
