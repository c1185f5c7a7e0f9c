// The 25 cells of the colour matrix, with the model's colour chosen by the test.
#include <gtest/gtest.h>

#include <array>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_magnification.h"
#include "filter/fake_model.h"
#include "filter/filter.h"
#include "filter/magnification.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_cursors);

AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save");
}

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

using Matrix = std::array<std::array<float, 5>, 5>;

Matrix CellsOf(const MAGCOLOREFFECT& effect) {
    Matrix cells = {};
    for (std::size_t row = 0; row < 5; ++row) {
        for (std::size_t column = 0; column < 5; ++column)
            cells[row][column] = effect.transform[row][column];
    }
    return cells;
}

const Matrix kIdentity = {{
    {1, 0, 0, 0, 0},
    {0, 1, 0, 0, 0},
    {0, 0, 1, 0, 0},
    {0, 0, 0, 1, 0},
    {0, 0, 0, 0, 1},
}};

class FilterMatrix : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_magnification = FakeMagnification{};
        g_model = FakeModel{};
        g_calls.clear();
        InstallFakeMagnification();
    }

    static Matrix Applied(double red, double green, double blue, double brightness) {
        g_model.red = red;
        g_model.green = green;
        g_model.blue = blue;
        g_app.brightness = brightness;
        g_app.filterColour = {};  // the model may return another colour now
        g_magnification.seen.clear();
        ApplyFilter();
        EXPECT_EQ(g_magnification.seen.size(), 1U);
        return g_magnification.seen.empty() ? Matrix{} : CellsOf(g_magnification.seen.front());
    }
};

}  // namespace

TEST_F(FilterMatrix, ContainsTheProductsOnTheDiagonalAndNothingElse) {
    // Single-precision neighbours of 0.8185 * 0.85, 0.939 * 0.85 and 0.1865 * 0.85.
    const Matrix expected = {{
        {0x1.643612p-1F, 0, 0, 0, 0},
        {0, 0x1.98a71ep-1F, 0, 0, 0},
        {0, 0, 0x1.44a8c2p-3F, 0, 0},
        {0, 0, 0, 1, 0},
        {0, 0, 0, 0, 1},
    }};
    EXPECT_EQ(Applied(0.8185, 0.939, 0.1865, 0.85), expected);
}

TEST_F(FilterMatrix, ProductsAreComputedInDoublePrecisionBeforeNarrowing) {
    // Each of these differs by one unit in the last place if the factors are narrowed first.
    const Matrix cells = Applied(0.6571, 0.939, 0.8185, 0.925);
    EXPECT_EQ(cells[0][0], 0x1.3733dap-1F);
    EXPECT_EQ(cells[1][1], 0x1.bcb5dcp-1F);
    EXPECT_EQ(Applied(0.5153, 0.1865, 0.8185, 0.45)[0][0], 0x1.dae686p-3F);
}

TEST_F(FilterMatrix, NeutralAtFullBrightnessIsTheIdentity) {
    EXPECT_EQ(Applied(1.0, 1.0, 1.0, 1.0), kIdentity);
}

TEST_F(FilterMatrix, BrightnessScalesTheThreeColoursAlike) {
    Matrix expected = kIdentity;
    expected[0][0] = expected[1][1] = expected[2][2] = 0.25F;
    EXPECT_EQ(Applied(1.0, 1.0, 1.0, 0.25), expected);
}

TEST_F(FilterMatrix, BlackKeepsAlphaAndTheConstant) {
    Matrix expected = kIdentity;
    expected[0][0] = expected[1][1] = expected[2][2] = 0.0F;
    EXPECT_EQ(Applied(1.0, 1.0, 1.0, 0.0), expected);
}

TEST_F(FilterMatrix, ProductsOutsideTheRangeAreClamped) {
    Matrix expected = kIdentity;
    expected[1][1] = 0.0F;
    EXPECT_EQ(Applied(1.5, -0.25, 4.0, 1.0), expected);
    EXPECT_EQ(Applied(1.0 + 1e-12, -1e-12, 1.0, 1.0), expected);
}

TEST_F(FilterMatrix, TheProductIsClampedNotItsFactors) {
    const Matrix cells = Applied(2.0, 0.5, 0.5, 0.375);
    EXPECT_EQ(cells[0][0], 0.75F);
    EXPECT_EQ(cells[1][1], 0.1875F);
}

TEST_F(FilterMatrix, TheModelIsCalledOnceForTheCurrentIntensity) {
    g_app.intensity = 0.731;
    Applied(1.0, 0.5, 0.25, 1.0);
    EXPECT_EQ(g_model.calls, 1);
    EXPECT_EQ(g_model.requestedIntensity, 0.731);
}

TEST_F(FilterMatrix, ClearingSetsTheIdentityWithoutCallingTheModel) {
    g_model.red = 0.5;
    ClearFilter();
    ASSERT_EQ(g_magnification.seen.size(), 1U);
    EXPECT_EQ(CellsOf(g_magnification.seen.front()), kIdentity);
    EXPECT_EQ(g_model.calls, 0);
}

TEST_F(FilterMatrix, WithTheFilterOffApplyingSetsTheIdentity) {
    g_app.filterOn = false;
    EXPECT_EQ(Applied(0.5, 0.5, 0.5, 0.5), kIdentity);
    EXPECT_EQ(g_model.calls, 0);
}

TEST_F(FilterMatrix, ShuttingDownSetsTheIdentity) {
    ShutdownMagnification();
    ASSERT_EQ(g_magnification.seen.size(), 1U);
    EXPECT_EQ(CellsOf(g_magnification.seen.front()), kIdentity);
}
