// A drag step computes the filter's colour once, for the pipeline and for all sixteen cursors.
#include <gtest/gtest.h>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_cursors.h"
#include "filter/fake_magnification.h"
#include "filter/fake_model.h"
#include "filter/fake_screen.h"
#include "filter/filter.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

AMBREL_REPLACE(void, SaveSettings, ()) {}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {}

namespace {

class SharedColour : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_app.useLegacyGamma = GetParam();
        g_magnification = FakeMagnification{};
        InstallFakeMagnification();
        g_screen = FakeScreen{};
        g_cursors = FakeCursors{};
        g_model = FakeModel{};
        g_model.green = 0.5;
        g_model.blue = 0.25;
        g_calls.clear();
    }

    static void Step(double intensity, double brightness) {
        g_app.intensity = intensity;
        g_app.brightness = brightness;
        g_model.calls = 0;
        g_cursors.built.clear();
        ApplyFilter();
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(BothPipelines, SharedColour, testing::Bool(),
                         [](const auto& pipeline) { return pipeline.param ? "Ramp" : "Matrix"; });

TEST_P(SharedColour, IsComputedOncePerStep) {
    Step(0.5, 1.0);
    EXPECT_EQ(g_model.calls, 1);
    EXPECT_EQ(g_model.requestedIntensity, 0.5);
    ASSERT_EQ(g_cursors.built.size(), 16U);
    const std::array<int, 3> white = {255, 128, 64};  // halves are rounded up
    EXPECT_EQ(g_cursors.built.front(), white);
    EXPECT_EQ(g_cursors.built.back(), white);
}

TEST_P(SharedColour, IsComputedAgainForAnotherWarmthOrBrightness) {
    Step(0.5, 1.0);
    Step(0.501, 1.0);
    EXPECT_EQ(g_model.calls, 1);
    EXPECT_EQ(g_model.requestedIntensity, 0.501);
    Step(0.501, 0.5);
    EXPECT_EQ(g_model.calls, 1);
    const std::array<int, 3> white = {128, 64, 32};
    EXPECT_EQ(g_cursors.built.back(), white);
}

TEST_P(SharedColour, IsCachedWhileNothingChanges) {
    Step(0.5, 1.0);
    Step(0.5, 1.0);
    EXPECT_EQ(g_model.calls, 0);
}
