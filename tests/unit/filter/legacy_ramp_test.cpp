// The entries of Legacy Mode's gamma ramp, with the model's colour chosen by the test.
#include <gtest/gtest.h>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_model.h"
#include "filter/fake_screen.h"
#include "filter/legacy_gamma.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_cursors);

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

class LegacyRamp : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_app.useLegacyGamma = true;
        g_screen = FakeScreen{};
        g_model = FakeModel{};
        g_calls.clear();
    }

    static Ramp Applied(double red, double green, double blue, double brightness) {
        g_model.red = red;
        g_model.green = green;
        g_model.blue = blue;
        g_app.brightness = brightness;
        g_app.filterColour = {};  // the model may return another colour now
        g_screen.seen.clear();
        ApplyLegacyRamp();
        EXPECT_EQ(g_screen.seen.size(), 1U);
        return g_screen.seen.empty() ? Ramp{} : g_screen.seen.front();
    }

    // Level times slope times 65535, in this order and in double precision, then truncated.
    static void ExpectLinear(const Ramp& ramp, std::size_t channel, double factor, double brightness) {
        const double slope = factor * brightness;
        for (std::size_t i = 0; i < 256; ++i) {
            const double level = static_cast<double>(i) / 255.0;
            double value = level * slope;
            value *= 65535.0;
            EXPECT_EQ(ramp.channels[channel][i], static_cast<long>(value)) << channel << " " << i;
        }
    }

    static void ExpectIdentity(const Ramp& ramp) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            for (std::size_t i = 0; i < 256; ++i)
                EXPECT_EQ(ramp.channels[channel][i], i * 257) << channel << " " << i;
        }
    }
};

}  // namespace

TEST_F(LegacyRamp, NeutralAtFullBrightnessIsTheIdentityAtEveryLevel) {
    ExpectIdentity(Applied(1.0, 1.0, 1.0, 1.0));
}

TEST_F(LegacyRamp, EveryLevelOfEachChannelIsLinearRedFirst) {
    const Ramp ramp = Applied(1.0, 0.8185, 0.1865, 0.85);
    ExpectLinear(ramp, kRed, 1.0, 0.85);
    ExpectLinear(ramp, kGreen, 0.8185, 0.85);
    ExpectLinear(ramp, kBlue, 0.1865, 0.85);
    // 0.85, 0.695725 and 0.158525 of 65535, truncated.
    EXPECT_EQ(ramp.channels[kRed][255], 55704);
    EXPECT_EQ(ramp.channels[kGreen][255], 45594);
    EXPECT_EQ(ramp.channels[kBlue][255], 10388);
}

TEST_F(LegacyRamp, EveryLevelIsExactOverTheEntireRangeOfBrightness) {
    for (const double brightness : {0.1, 0.123, 0.3333, 0.5, 0.75, 0.999}) {
        const Ramp ramp = Applied(0.9999, 0.6571, 0.0194, brightness);
        ExpectLinear(ramp, kRed, 0.9999, brightness);
        ExpectLinear(ramp, kGreen, 0.6571, brightness);
        ExpectLinear(ramp, kBlue, 0.0194, brightness);
    }
}

TEST_F(LegacyRamp, EntriesAreTruncatedNotRounded) {
    const Ramp ramp = Applied(0.5, 0.1, 0.01, 1.0);
    EXPECT_EQ(ramp.channels[kRed][255], 32767);   // 32767.5
    EXPECT_EQ(ramp.channels[kRed][1], 128);       // 128.5
    EXPECT_EQ(ramp.channels[kGreen][255], 6553);  // 6553.5
    EXPECT_EQ(ramp.channels[kBlue][255], 655);    // 655.35
    EXPECT_EQ(ramp.channels[kBlue][1], 2);        // 2.57
}

TEST_F(LegacyRamp, PureRedAtSeventyPercentEndsAt45874AndTheOtherChannelsAreDark) {
    const Ramp ramp = Applied(1.0, 0.0, 0.0, 0.7);
    EXPECT_EQ(ramp.channels[kRed][255], 45874);
    for (std::size_t i = 0; i < 256; ++i) {
        EXPECT_EQ(ramp.channels[kGreen][i], 0) << i;
        EXPECT_EQ(ramp.channels[kBlue][i], 0) << i;
    }
}

TEST_F(LegacyRamp, NoBrightnessIsBlackThroughout) {
    const Ramp ramp = Applied(1.0, 1.0, 1.0, 0.0);
    for (const auto& channel : ramp.channels) {
        for (const std::uint16_t entry : channel)
            EXPECT_EQ(entry, 0);
    }
}

TEST_F(LegacyRamp, TheModelIsCalledOnceForTheCurrentIntensity) {
    g_app.intensity = 0.731;
    Applied(1.0, 1.0, 1.0, 1.0);
    EXPECT_EQ(g_model.calls, 1);
    EXPECT_EQ(g_model.requestedIntensity, 0.731);
}

TEST_F(LegacyRamp, WithTheFilterOffTheIdentityIsSetWithoutCallingTheModel) {
    g_app.filterOn = false;
    ExpectIdentity(Applied(0.5, 0.5, 0.5, 0.5));
    EXPECT_EQ(g_model.calls, 0);
}

TEST_F(LegacyRamp, RestoringSetsTheIdentityRegardlessOfTheState) {
    g_app.useLegacyGamma = false;
    g_app.brightness = 0.5;
    RestoreIdentityRamp();
    ASSERT_EQ(g_screen.seen.size(), 1U);
    ExpectIdentity(g_screen.seen.front());
    EXPECT_EQ(g_model.calls, 0);
}

TEST_F(LegacyRamp, TheIdentityIsTriedAgainAtTheEndIfWindowsProvidesNoContext) {
    g_screen.contextsRefused = 1;
    RestoreIdentityRamp();
    EXPECT_TRUE(g_screen.seen.empty()) << "a later event restores it";
    g_app.ending = true;
    g_screen.contextsRefused = 1;
    RestoreIdentityRamp();
    ASSERT_EQ(g_screen.seen.size(), 1U);
    EXPECT_TRUE(g_screen.seen[0] == IdentityRamp());
    EXPECT_EQ(g_screen.contextsHeld, 0);
}
